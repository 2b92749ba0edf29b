#include "Options.h"

#include <cmath>

#include "Command.h"
#include "NumberText.h"
#include "Progress.h"

namespace tarvex_cli {
namespace {

// Every command takes these beside its own.
const std::vector<OptionRule> kCommonOptions{{"--quiet", "-q"}};

const OptionRule *findRule(const std::vector<OptionRule> &rules, std::string_view name) {
    for (const auto *list : {&rules, &kCommonOptions})
        for (const OptionRule &rule : *list)
            if (name == rule.name || (!rule.shortName.empty() && name == rule.shortName)) return &rule;
    return nullptr;
}

bool isNumber(std::string_view word) { return parseReal(word).has_value(); }

bool looksLikeOption(std::string_view word) { return word.size() > 1 && word[0] == '-' && !isNumber(word); }

CliError refusal(std::string_view command, const std::string &message) {
    return usageError(command.empty() ? message : std::string(command) + ": " + message);
}

class Reader {
public:
    Reader(std::string_view command, const std::vector<std::string> &words, const std::vector<OptionRule> &rules,
           OptionPlacement placement)
        : command_(command), words_(words), rules_(rules), placement_(placement) {}

    ParsedOptions read() {
        bool optionsEnded = false;
        while (next_ < words_.size()) {
            const std::string &word = words_[next_++];
            if (!optionsEnded && word == "--") optionsEnded = true;
            else if (!optionsEnded && looksLikeOption(word)) readOption(word);
            else {
                parsed_.addOperand(word);
                optionsEnded = optionsEnded || placement_ == OptionPlacement::BeforeOperands;
            }
        }
        if (parsed_.has("--quiet")) setQuiet(true);
        return std::move(parsed_);
    }

private:
    void readOption(const std::string &word) {
        const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
        const std::string name = word.substr(0, equals);
        const OptionRule *rule = findRule(rules_, name);
        std::optional<std::string> attached;  // -oout.png
        if (rule == nullptr && !word.starts_with("--") && word.size() > 2) {
            rule = findRule(rules_, word.substr(0, 2));
            if (rule != nullptr && rule->takesValue) attached = word.substr(2);
            else rule = nullptr;
        }
        if (rule == nullptr) throw refusal(command_, "unknown option " + name);
        if (!rule->repeatable && parsed_.has(rule->name))
            throw refusal(command_, std::string(rule->name) + " is given more than once");
        if (!rule->takesValue) {
            if (equals != std::string::npos) throw refusal(command_, name + " takes no value");
            parsed_.add(rule->name, "");
        } else if (attached) {
            parsed_.add(rule->name, *attached);
        } else if (equals != std::string::npos) {
            parsed_.add(rule->name, word.substr(equals + 1));
        } else if (next_ < words_.size()) {
            parsed_.add(rule->name, words_[next_++]);
        } else {
            throw refusal(command_, name + " needs a value");
        }
    }

    std::string_view command_;
    const std::vector<std::string> &words_;
    const std::vector<OptionRule> &rules_;
    OptionPlacement placement_;
    std::size_t next_ = 0;
    ParsedOptions parsed_;
};

}  // namespace

std::optional<std::string> ParsedOptions::value(std::string_view name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) return std::nullopt;
    return found->second.back();
}

std::vector<std::string> ParsedOptions::values(std::string_view name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? std::vector<std::string>{} : found->second;
}

ParsedOptions readOptions(std::string_view command, const std::vector<std::string> &words,
                          const std::vector<OptionRule> &rules, OptionPlacement placement) {
    return Reader(command, words, rules, placement).read();
}

const std::string &onlyOperand(std::string_view command, const ParsedOptions &parsed, std::string_view what) {
    const std::size_t count = parsed.operands().size();
    if (count == 1) return parsed.operands().front();
    throw refusal(command, "give one " + std::string(what) + (count > 1 ? ", not " + std::to_string(count) : ""));
}

std::string outputFile(std::string_view command, const ParsedOptions &parsed) {
    const auto named = parsed.value("--output");
    if (!named) return onlyOperand(command, parsed, "output file");
    if (!parsed.operands().empty()) throw refusal(command, "give the output file once, with -o or alone");
    return *named;
}

std::int64_t wholeNumberOption(std::string_view command, std::string_view option, const std::string &text,
                               std::int64_t low, std::int64_t high) {
    const auto value = parseInt64(text);
    if (value && *value >= low && *value <= high) return *value;
    throw refusal(command, std::string(option) + " needs a whole number from " + std::to_string(low) + " to " +
                               std::to_string(high) + ", not '" + text + "'");
}

double realOption(std::string_view command, std::string_view option, const std::string &text) {
    const auto value = parseReal(text);
    if (value && std::isfinite(*value)) return *value;
    throw refusal(command, std::string(option) + " needs a number, not '" + text + "'");
}

std::string choiceList(const std::vector<std::string_view> &words) {
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i)
        list.append(i == 0 ? "" : i + 1 == words.size() ? " or " : ", ").append(words[i]);
    return list;
}

void refuseChoice(std::string_view command, std::string_view option, const std::string &text,
                  const std::vector<std::string_view> &words) {
    throw refusal(command, std::string(option) + " is " + choiceList(words) + ", not '" + text + "'");
}

}  // namespace tarvex_cli
