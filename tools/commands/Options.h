#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvex_cli {

// One option a command knows: "--output", "-o" beside it when it has a short
// form. A value follows as the next word or after '=' (--output=FILE).
struct OptionRule {
    std::string_view name;
    std::string_view shortName = {};
    bool takesValue = false;
    bool repeatable = false;  // otherwise a second occurrence is refused
};

// A command line read against a command's options: the values by long name,
// in the order given, and the other words.
class ParsedOptions {
public:
    bool has(std::string_view name) const { return values_.count(std::string(name)) != 0; }
    std::optional<std::string> value(std::string_view name) const;
    std::vector<std::string> values(std::string_view name) const;
    const std::vector<std::string> &operands() const { return operands_; }

    void add(std::string_view name, std::string value) { values_[std::string(name)].push_back(std::move(value)); }
    void addOperand(std::string word) { operands_.push_back(std::move(word)); }

private:
    std::map<std::string, std::vector<std::string>, std::less<>> values_;
    std::vector<std::string> operands_;
};

// Where options may stand: anywhere until "--", or only before the first
// operand (the tool's own options, which come before a command's name).
enum class OptionPlacement { Anywhere, BeforeOperands };

// Reads the words after a command's name. Every command also takes -q/--quiet,
// which silences progress lines and summaries. "-" (standard input or output) and
// negative numbers are operands. Throws a usage error (exit status 2) that
// starts with "COMMAND: " for an unknown option, a missing or unwanted value,
// and a repeated option.
ParsedOptions readOptions(std::string_view command, const std::vector<std::string> &words,
                          const std::vector<OptionRule> &rules,
                          OptionPlacement placement = OptionPlacement::Anywhere);

// The one operand a command takes; otherwise a usage error
// "COMMAND: give one WHAT" (", not 2" when there are more).
const std::string &onlyOperand(std::string_view command, const ParsedOptions &parsed, std::string_view what);

// Where a command that only writes a file writes it: the value of -o/--output
// or the one operand, as users of either habit give it; a usage error when
// neither or both are given.
std::string outputFile(std::string_view command, const ParsedOptions &parsed);

// Option values that must be numbers; the whole word must be the number.
// Usage errors name the command, the option and what it needs.
std::int64_t wholeNumberOption(std::string_view command, std::string_view option, const std::string &text,
                               std::int64_t low, std::int64_t high);
double realOption(std::string_view command, std::string_view option, const std::string &text);

// A value from a fixed set of words, each with what it stands for.
template <typename Value>
struct Choice {
    std::string_view word;
    Value value;
};

std::string choiceList(const std::vector<std::string_view> &words);
[[noreturn]] void refuseChoice(std::string_view command, std::string_view option, const std::string &text,
                               const std::vector<std::string_view> &words);

template <typename Value>
Value choiceOption(std::string_view command, std::string_view option, const std::string &text,
                   const std::vector<Choice<Value>> &choices) {
    std::vector<std::string_view> words;
    for (const Choice<Value> &choice : choices) {
        if (choice.word == text) return choice.value;
        words.push_back(choice.word);
    }
    refuseChoice(command, option, text, words);
}

}  // namespace tarvex_cli
