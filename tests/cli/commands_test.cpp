// Calls of the program and what it must answer: commands.txt holds them, and says how they are written.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/cli/process.h"
#include "tests/support/vectors.h"

namespace toolbelt::test {
namespace {

std::string unescaped(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\\') {
            c = text.at(++i);
            if (c == 'x') {
                c = static_cast<char>(fromHex(text.substr(i + 1, 2)).at(0));
                i += 2;
            } else {
                c = c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
            }
        }
        result += c;
    }
    return result;
}

bool isMessage(const std::string& text)
{
    return text.starts_with("pattern:") || text.starts_with("repeat:") || text.starts_with("hex:");
}
std::string bytesOf(const std::string& text)
{
    if (!isMessage(text)) return unescaped(text);
    Record record;
    record.add("content", text);
    const Bytes bytes = record.message("content");
    return std::string(bytes.begin(), bytes.end());
}
// A file is its name and, behind a space, its content.
std::string nameOf(const std::string& file)
{
    return unescaped(file.substr(0, file.find(' ')));
}
std::string contentOf(const std::string& file)
{
    return bytesOf(file.substr(std::min(file.find(' '), file.size() - 1) + 1));
}

// A document without its line ends and indentation.
std::string flat(const std::string& document)
{
    std::string result;
    for (const std::string& line : lines(document))
        result += line.substr(std::min(line.find_first_not_of(' '), line.size()));
    std::erase(result, '\r');
    return result;
}

class Commands : public testing::Test
{
protected:
    std::string value(const std::string& text) const
    {
        if (isMessage(text)) return bytesOf(text);
        std::string result = unescaped(text);
        for (std::size_t from, to; (from = result.find('%')) != std::string::npos;) {
            to = result.find('%', from + 1);
            result.replace(from, to + 1 - from, scratch_.path(result.substr(from + 1, to - from - 1)));
        }
        return result;
    }
    Arguments words(const std::string& text) const
    {
        Arguments result;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            const std::string word = text.substr(at, end - at);
            result.push_back(word == "''" ? "" : value(word));
            at = end + 1;
        }
        return result;
    }
    // All lines of that name, or some parts under the other one, or nothing.
    void expectText(const Record& record, const std::string& name, const std::string& text) const
    {
        const std::string parts = name == "out" ? "has" : "err-has";
        std::string all;
        for (const std::string& line : record.list(name)) all += value(line) + '\n';
        for (const std::string& part : record.list(parts)) EXPECT_TRUE(contains(text, value(part))) << text;
        for (const std::string& part : record.list("has-not")) EXPECT_FALSE(contains(text, value(part))) << text;
        if (record.has(name) || !record.has(parts)) {
            EXPECT_EQ(text, all);
        }
    }
    void call(const Record& record)
    {
        for (const std::string& file : record.list("file")) scratch_.write(nameOf(file), contentOf(file));
        const Arguments arguments = words(record.get("call"));
        const std::string input = record.has("input") ? value(record.get("input")) : "";
        const Outcome outcome = run(arguments, input);
        EXPECT_EQ(outcome.exitCode, static_cast<int>(record.number("exit"))) << outcome.err;
        expectText(record, "out", outcome.out);
        expectText(record, "err", outcome.err);
        EXPECT_TRUE(outcome.exitCode < 2 || outcome.err.starts_with("toolbelt: ")) << outcome.err;
        EXPECT_EQ(outcome.exitCode == 2 && !record.has("err"), contains(outcome.err, "\nusage: toolbelt "))
            << outcome.err;
        for (const std::string& file : record.list("holds"))
            EXPECT_TRUE(scratch_.read(nameOf(file)) == contentOf(file)) << file.substr(0, 100);
        if (record.has("left")) {
            EXPECT_EQ(scratch_.list(), words(record.get("left")));
        }
        if (!record.has("json")) return;
        const bool isJson = arguments[0] == "--json";
        const std::string document = isJson ? outcome.out : run(Arguments{"--json"} + arguments, input).out;
        for (const std::string& part : record.list("json"))
            EXPECT_TRUE(contains(flat(document), value(part))) << document;
        documents_ += (documents_.empty() ? "[" : ",") + document;
    }
    void help(const Record& record) const
    {
        const std::string& name = record.get("help");
        EXPECT_TRUE(contains(list_, "\n  " + name + " "));
        const Outcome help = run(words(name) + Arguments{"--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.err, "");
        EXPECT_TRUE(contains(help.out, "Usage: toolbelt " + name)) << help.out;
        EXPECT_TRUE(contains(help.out, "Example: toolbelt " + words(name)[0])) << help.out;
        if (!record.has("unreadable")) return;
        const Outcome outcome = run(words(name) + words(record.get("unreadable")));
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_TRUE(outcome.err.starts_with("toolbelt: nowhere: ")) << outcome.err;
    }

    const Scratch scratch_;
    const std::string list_ = run({"--help"}).out;
    std::string documents_; // all that were written, in an array that is not closed yet
};

TEST_F(Commands, AnswerWhatTheFileSays)
{
    for (const Record& record : readVectors("../cli/commands.txt")) {
        for (const std::string& arguments : record.list("wrong")) {
            const Outcome outcome = run(words(arguments));
            EXPECT_EQ(outcome.exitCode, 2) << arguments;
            EXPECT_EQ(outcome.out, "") << arguments;
            EXPECT_TRUE(outcome.err.starts_with("toolbelt: ")) << outcome.err;
            EXPECT_TRUE(contains(outcome.err, "\nusage: toolbelt ")) << arguments << ": " << outcome.err;
        }
        SCOPED_TRACE(record.where + ": " + record.list(record.kind()).front());
        if (record.kind() == "call") call(record);
        if (record.kind() == "help") help(record);
        EXPECT_EQ(record.unread(), std::vector<std::string>());
    }
    EXPECT_EQ(run({"json", "format", "-"}, documents_ + "]").exitCode, 0) << "each of them is JSON";
}

} // namespace
} // namespace toolbelt::test
