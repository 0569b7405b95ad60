// What a command declares of its options and arguments. The parsing itself is CLI11's, which parser.cpp alone includes:
// its header takes the compiler ten seconds.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace toolbelt::cli {

// One that was declared, to say more about it.
class Option
{
public:
    explicit Option(CLI::Option* option) : option_(option) {}
    Option& required();
    Option& value(const char* name); // how the help calls what follows; "" for a plain argument
    Option& oneOf(const std::vector<std::string>& values);
    Option& range(std::uint32_t low, std::uint32_t high);
    Option& repeated();                        // of a list: one value each time it is given
    Option& environment(const char* variable); // stands in when it is not given
    // Answers what is wrong with a value, nothing when it is right.
    Option& check(std::function<std::string(const std::string& text)> test);

private:
    CLI::Option* option_;
};

class Parser
{
public:
    Parser(const char* summary, const std::string& name, const std::string& usage);
    ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // names: "-c,--cipher" for an option, "FILE" for an argument. The target holds the default and must live until the
    // action has run.
    Option option(const char* names, std::string& target, const std::string& help);
    Option option(const char* names, std::vector<std::string>& target, const std::string& help);
    Option option(const char* names, std::uint32_t& target, const std::string& help);
    Option option(const char* names, double& target, const std::string& help);
    void flag(const char* names, bool& target, const std::string& help);
    // Behind the list of options.
    void footer(const std::string& text);

    // Fills the targets. False when help was asked for, which is printed then; UsageError when an argument is wrong.
    bool parse(const std::vector<std::string>& arguments);

private:
    std::unique_ptr<CLI::App> app_;
};

} // namespace toolbelt::cli
