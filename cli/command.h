// The commands. Each has a function that declares its options to the parser and returns what runs once they are parsed;
// main.cpp lists them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/errors.h"
#include "cli/parser.h"

namespace toolbelt::cli {

using Action = std::function<ExitCode()>;

Action prepareDigest(Parser& parser);
Action prepareCipher(Parser& parser);
Action prepareCipherEncrypt(Parser& parser);
Action prepareCipherDecrypt(Parser& parser);
Action prepareBignum(Parser& parser);
Action prepareArmour(Parser& parser);
Action prepareDearmour(Parser& parser);
Action prepareDerDump(Parser& parser);
Action prepareKeyGenerate(Parser& parser);
Action prepareKeyShow(Parser& parser);
Action prepareKeySsh(Parser& parser);
Action prepareSign(Parser& parser);
Action prepareVerify(Parser& parser);
Action prepareEncrypt(Parser& parser);
Action prepareDecrypt(Parser& parser);
Action prepareCertShow(Parser& parser);
Action prepareCertVerify(Parser& parser);
Action prepareDialog(Parser& parser);
Action prepareJsonFormat(Parser& parser);
Action prepareTextShow(Parser& parser);
Action prepareTextFind(Parser& parser);
Action preparePost(Parser& parser);
Action prepareSystem(Parser& parser);
Action prepareSpeed(Parser& parser);

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
