#include "tools/commandline/Help.h"

#include <algorithm>

#include "tools/commandline/Streams.h"

namespace commandline {

namespace {

std::string row(const std::string& left, const std::string& right, std::size_t width) {
    return "  " + left + std::string(std::max(width, left.size()) - left.size() + 2, ' ') + right + '\n';
}

std::string spelling(const Option& option) {
    std::string text = option.letter != 0 ? std::string("-") + option.letter + ", " : "    ";
    text += std::string("--") + option.word;
    return option.value != nullptr ? text + ' ' + option.value : text;
}

std::string heading(const char* text) { return boldForOutput(text); }

}  // namespace

const Command* findCommand(const Program& program, const std::string& name) {
    const auto found =
        std::ranges::find_if(program.commands, [&](const Command* command) { return name == command->name; });
    return found == program.commands.end() ? nullptr : *found;
}

std::vector<Option> optionsOf(const Command& command) {
    std::vector<Option> options(command.options.begin(), command.options.end());
    options.push_back({'h', "help", nullptr, "this text"});
    return options;
}

std::string generalHelp(const Program& program) {
    const std::string name = program.name;
    std::string text = heading("usage:") + ' ' + name + " COMMAND [OPTION]... NAME...\n       " + name +
                       " COMMAND --help\n\n" + heading("commands:") + '\n';
    for (const Command* const command : program.commands) {
        text += row(command->name, command->summary, 10);
    }
    text += '\n' + heading("options:") + '\n';
    text += row("-h, --help", "this text", 10);
    text += row("--version", "the version", 10);
    return text + '\n' + program.notes;
}

std::string helpFor(const Program& program, const Command& command) {
    const auto options = optionsOf(command);
    std::size_t width = 0;
    for (const Option& option : options) {
        width = std::max(width, spelling(option).size());
    }
    std::string text = heading("usage:") + ' ' + program.name + ' ' + command.name + " [OPTION]... " +
                       command.arguments + "\n\n" + command.help;
    text += '\n' + heading("options:") + '\n';
    for (const Option& option : options) {
        text += row(spelling(option), option.text, width);
    }
    return text;
}

}  // namespace commandline
