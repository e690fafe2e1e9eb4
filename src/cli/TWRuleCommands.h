#pragma once

#include "cli/TWCommandTable.h"
#include "cli/TWListArguments.h"
#include "editors/TWRulesEditor.h"
#include "support/TWText.h"

// The commands that all lists of rules have in common, for the rules of one editor. Group is the name of their group.
template <typename Editor, const char* Group>
struct TWRuleCommands {
    using Rules = typename Editor::Rules;
    using Rule = typename Rules::value_type;

    static constexpr auto Number = "N";

    static Editor& editor(const TWCommandContext& context) { return context.delegate->editors().get<Editor>(); }

    // "3   on   ", and the text of each rule.
    static TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation,
        std::string (*json)(const Rule&), std::string (*text)(const Rule&), const char* none)
    {
        const auto rules = editor(context).list().saved();
        std::string out;
        for (std::size_t index = 0; index < rules.size(); ++index) {
            std::string start = std::to_string(index + 1);
            start.resize(std::max<std::size_t>(start.size() + 1, 4), ' ');
            out += invocation.json ? json(rules[index])
                                   : start + (rules[index].active ? "on   " : "off  ") + text(rules[index]) + "\n";
        }
        return { TWStatus::Success, out, rules.empty() && !invocation.json ? none : "" };
    }

    static TWCommandResult append(const TWCommandContext& context, const Rule& rule)
    {
        return TWSaved(*editor(context).list().changeSaved([&](Rules& rules) {
            rules.push_back(rule);
            return true;
        }));
    }

    static TWCommandResult applyDefaults(const TWCommandContext& context, const TWInvocation&)
    {
        std::string problem;
        const auto defaults = editor(context).defaultRules(problem);
        if (!defaults)
            return TWSaved(problem);
        return TWSaved(*editor(context).list().changeSaved([&](Rules& rules) {
            rules = *defaults;
            return true;
        }));
    }

    static TWCommandResult remove(const TWCommandContext& context, const TWInvocation& invocation)
    {
        return change(context, invocation,
            [](Rules& rules, std::size_t row) { rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(row)); });
    }

    static TWCommandResult switchOn(const TWCommandContext& context, const TWInvocation& invocation)
    {
        return change(context, invocation, [](Rules& rules, std::size_t row) { rules[row].active = true; });
    }

    static TWCommandResult switchOff(const TWCommandContext& context, const TWInvocation& invocation)
    {
        return change(context, invocation, [](Rules& rules, std::size_t row) { rules[row].active = false; });
    }

    // The given commands and the four above.
    static TWCommandGroup group(const char* help, std::vector<TWCommandRow> rows, const char* numberHelp)
    {
        using enum TWCommandKind;
        const TWArgument number{ TWArgument::Kind::Text, TWArgument::Need::Required, Number, numberHelp };
        rows.push_back({ "defaults", "Replace all rules by the default ones", ChangesLists, {}, applyDefaults });
        rows.push_back({ "remove", "Remove rule N", ChangesLists, { number }, remove });
        rows.push_back({ "on", "Switch rule N on", ChangesLists, { number }, switchOn });
        rows.push_back({ "off", "Switch rule N off", ChangesLists, { number }, switchOff });
        return { Group, help, std::move(rows) };
    }

private:
    static TWCommandResult change(const TWCommandContext& context, const TWInvocation& invocation,
        const std::function<void(Rules&, std::size_t row)>& change)
    {
        constexpr auto NoSuchRule = "There is no rule %@. Try \"tidewell %@ list\".\n";
        const auto text = invocation.text(Number);
        const auto number = TWReadNumber(text);
        const auto problem
            = number ? editor(context).list().changeSavedRow(*number - 1, change) : std::optional<std::string>();
        return problem ? TWSaved(*problem) : TWWrongUse(TWText::fill(NoSuchRule, { TWText::oneLine(text), Group }));
    }
};
