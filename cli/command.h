// The commands. Each has a function that declares its options to the parser and returns what runs once they are parsed;
// main.cpp lists them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/errors.h"

namespace toolbelt::cli {

using Action = std::function<ExitCode()>;

Action prepareDigest(CLI::App& app);
Action prepareCipher(CLI::App& app);
Action prepareCipherEncrypt(CLI::App& app);
Action prepareCipherDecrypt(CLI::App& app);
Action prepareBignum(CLI::App& app);
Action prepareArmour(CLI::App& app);
Action prepareDearmour(CLI::App& app);
Action prepareDerDump(CLI::App& app);
Action prepareKeyGenerate(CLI::App& app);
Action prepareKeyShow(CLI::App& app);
Action prepareKeySsh(CLI::App& app);
Action prepareSign(CLI::App& app);
Action prepareVerify(CLI::App& app);
Action prepareEncrypt(CLI::App& app);
Action prepareDecrypt(CLI::App& app);
Action prepareCertShow(CLI::App& app);
Action prepareCertVerify(CLI::App& app);
Action prepareDialog(CLI::App& app);
Action prepareJsonFormat(CLI::App& app);
Action prepareTextShow(CLI::App& app);
Action prepareTextFind(CLI::App& app);
Action preparePost(CLI::App& app);
Action prepareSystem(CLI::App& app);

// Runs the work; one that fails is reported, and others may still run. The system's refusal ends it all.
template <typename Work>
ExitCode tolerate(Work work)
{
    try {
        return work();
    } catch (const Failure& failure) {
        if (failure.exitCode == EXIT_SYSTEM) throw;
        reportError(failure.what());
        return failure.exitCode;
    }
}

// Runs work(item) for each, tolerating failures.
template <typename Item, typename Work>
ExitCode forEach(const std::vector<Item>& items, Work work)
{
    ExitCode code = EXIT_DONE;
    for (const Item& item : items) code = worse(code, tolerate([&] { return work(item); }));
    return code;
}

} // namespace toolbelt::cli
