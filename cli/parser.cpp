#include "cli/parser.h"

#include <CLI/CLI.hpp>

#include "cli/console.h"
#include "cli/errors.h"

namespace toolbelt::cli {
namespace {

class HelpFormatter : public CLI::Formatter
{
public:
    explicit HelpFormatter(std::string usage) : usage_(std::move(usage)) { label("Positionals", "Arguments"); }
    std::string make_usage(const CLI::App*, std::string) const override { return "Usage: " + usage_ + "\n"; }

private:
    const std::string usage_;
};

// The parser takes an argument in square brackets for a list. A mark in front keeps it whole, and is taken off again.
constexpr char MARK = '\1';

std::string markBrackets(const std::string& argument)
{
    return argument.starts_with('[') && argument.ends_with(']') ? MARK + argument : argument;
}

} // namespace

Option& Option::required()
{
    option_->required();
    return *this;
}

Option& Option::value(const char* name)
{
    option_->type_name(name);
    return *this;
}

Option& Option::oneOf(const std::vector<std::string>& values)
{
    option_->check(CLI::IsMember(values));
    return *this;
}

Option& Option::range(std::uint32_t low, std::uint32_t high)
{
    option_->check(CLI::Range(low, high));
    return *this;
}

Option& Option::repeated()
{
    option_->expected(1)->take_all();
    return *this;
}

Option& Option::environment(const char* variable)
{
    option_->envname(variable);
    return *this;
}

Option& Option::check(std::function<std::string(const std::string&)> test)
{
    option_->check(std::move(test));
    return *this;
}

Parser::Parser(const char* summary, const std::string& name, const std::string& usage)
    : app_(std::make_unique<CLI::App>(summary, name))
{
    app_->allow_windows_style_options(false); // "/folder/file" is a file
    app_->formatter(std::make_shared<HelpFormatter>(usage));
}

Parser::~Parser() = default;

Option Parser::option(const char* names, std::string& target, const std::string& help)
{
    return Option(app_->add_option(names, target, help));
}

Option Parser::option(const char* names, std::vector<std::string>& target, const std::string& help)
{
    return Option(app_->add_option(names, target, help));
}

Option Parser::option(const char* names, std::uint32_t& target, const std::string& help)
{
    return Option(app_->add_option(names, target, help));
}

Option Parser::option(const char* names, double& target, const std::string& help)
{
    return Option(app_->add_option(names, target, help));
}

void Parser::flag(const char* names, bool& target, const std::string& help)
{
    app_->add_flag(names, target, help);
}

void Parser::footer(const std::string& text)
{
    app_->footer(text);
}

bool Parser::parse(const std::vector<std::string>& arguments)
{
    for (CLI::Option* option : app_->get_options([](const CLI::Option* o) { return o->get_type_size() != 0; }))
        option->transform([](std::string value) { return value.starts_with(MARK) ? value.substr(1) : value; });
    std::vector<std::string> reversed; // as CLI11 wants it
    for (const std::string& argument : arguments) reversed.insert(reversed.begin(), markBrackets(argument));
    try {
        app_->parse(reversed);
        return true;
    } catch (const CLI::CallForHelp&) {
        print(app_->help());
        return false;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
}

} // namespace toolbelt::cli
