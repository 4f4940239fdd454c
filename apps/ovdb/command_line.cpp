#include "command_line.h"

#include "commands.h"
#include "near_name.h"
#include "options.h"

namespace ovdb {

namespace {

Failure usage_failure(const Command *command, const std::string &what)
{
    const std::string name = command ? " " + std::string(command->name) : std::string();
    return Failure(ExitCode::Usage, what + "\n'ovdb" + name + " --help' shows what there is");
}

class Parser
{
public:
    explicit Parser(const std::vector<std::string> &arguments) : arguments_(arguments) {}

    Request parse()
    {
        bool only_operands = false;
        while (next_ < arguments_.size()) {
            const std::string argument = arguments_[next_++];
            if (!only_operands && argument == "--")
                only_operands = true;
            else if (!only_operands && argument.size() > 1 && argument[0] == '-')
                take_option(argument);
            else if (!request_.command)
                take_command(argument);
            else
                request_.operands.push_back(argument);
        }
        if (!request_.help && !request_.version)
            check_operands();
        return std::move(request_);
    }

private:
    void take_command(const std::string &name)
    {
        request_.command = find_command(name);
        if (!request_.command)
            throw usage_failure(nullptr,
                                "there is no command '" + name + "'" + near_name_hint(name, command_names()));
    }

    void take_option(const std::string &argument)
    {
        // The value of an option with one argument can be written to it: --limit=3.
        const auto equals = argument.starts_with("--") ? argument.find('=') : std::string::npos;
        const std::string name = argument.substr(0, equals);
        const unsigned bits = request_.command ? request_.command->bit : unsigned{for_all};
        const Option *option = find_option(name, bits);
        if (!option || (!request_.command && option->commands != for_all))
            throw usage_failure(request_.command, unknown_option(name));
        std::vector<std::string> values;
        if (equals != std::string::npos) {
            if (option->arguments.empty())
                throw usage_failure(request_.command, name + " takes no value");
            values.push_back(argument.substr(equals + 1));
        }
        while (values.size() < option->arguments.size()) {
            if (next_ == arguments_.size())
                throw usage_failure(request_.command, name + ": " +
                                                          std::string(option->arguments[values.size()]) +
                                                          " is missing behind it");
            values.push_back(arguments_[next_++]);
        }
        if (option->derive)
            request_.operations.push_back(Operation{option, std::move(values)});
        else
            option->set(request_, values);
    }

    std::string unknown_option(const std::string &name) const
    {
        if (!request_.command)
            return "there is no option " + name + " before a command";
        std::vector<std::string_view> known;
        for (const Option &option : options())
            if (option.commands & request_.command->bit)
                known.push_back(option.name);
        return "'" + std::string(request_.command->name) + "' has no option " + name +
               near_name_hint(name, known);
    }

    void check_operands() const
    {
        if (!request_.command)
            throw usage_failure(nullptr, "no command is given");
        const Command &command = *request_.command;
        if (request_.operands.size() < command.least)
            throw usage_failure(&command, std::string(command.operands) + " is missing behind '" +
                                              std::string(command.name) + "'");
        if (request_.operands.size() > command.most)
            throw usage_failure(&command, "'" + request_.operands[command.most] + "' is one too many: '" +
                                              std::string(command.name) + "' takes " +
                                              std::string(command.operands));
    }

    const std::vector<std::string> &arguments_;
    std::size_t next_ = 0;
    Request request_;
};

} // namespace

Request parse_command_line(const std::vector<std::string> &arguments)
{
    return Parser(arguments).parse();
}

} // namespace ovdb
