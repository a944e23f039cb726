#include "cli/Cli.h"

#include "base/Error.h"
#include "cli/CliContext.h"
#include "cli/CliOutput.h"
#include "cli/Command.h"
#include "cli/Options.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr const char* Overview =
    "Makes the icons and launch images of FireMonkey (FMX) apps from two source images\n"
    "and enters them into the project file (.dproj).\n";
constexpr const char* ExitStatusHelp =
    "Exit status: 0 done, 1 the job failed or check found something, 2 wrong usage.";
constexpr const char* CommonOptionsHelp =
    "--data DIR and --json, described by corvadine-cli --help, go with every command.";

// Parses one command line. Holds the parser with all commands, and the values found.
class TCommandLine {
public:
    TCommandLine() : FApp(Overview, "corvadine-cli")
    {
        FApp.set_version_flag("--version", CORVADINE_VERSION, "Print the version and exit");
        AddTextOption(
            FApp, "--data", [this](const QString& folder) { SetDataFolder(folder); },
            "Folder of Corvadine.db and the backups (default: the program's)")
            ->type_name("DIR");
        FApp.add_flag("--json")->description("Print one JSON document instead of text");
        FApp.set_help_flag("-h,--help", "Print this help and exit");
        FApp.footer(std::string("corvadine-cli COMMAND --help describes a command.\n") + ExitStatusHelp);
        FApp.require_subcommand(0, 1);
        FApp.get_formatter()->label("SUBCOMMAND", "COMMAND");
        FApp.get_formatter()->label("REQUIRED", "");
        FApp.get_formatter()->label("OPTIONS", "options");
        FApp.get_formatter()->column_width(HelpColumn);
        for (const TCommandPtr& command : FCommands)
            DeclareCommand(*command);
    }

    // Throws CLI::ParseError, also for --help and --version. Throws TError(Usage) as CheckUsage() does.
    void Parse(const QStringList& arguments)
    {
        std::vector<std::string> words;
        bool mayBeOption = true;
        for (const QString& argument : arguments) {
            mayBeOption = mayBeOption && argument != "--"_L1;
            const bool hasEmptyValue =
                mayBeOption && argument.startsWith("--"_L1) && argument.indexOf(u'=') == argument.size() - 1;
            words.push_back((hasEmptyValue ? argument.chopped(1) : argument).toStdString());
            if (hasEmptyValue) // the parser would take the next word as the value of "--icon="
                words.emplace_back();
        }
        std::reverse(words.begin(), words.end()); // the parser takes the last word first
        FApp.parse(std::move(words));
        if (TCommand* const command = Command())
            command->CheckUsage();
    }

    // Returns the command that was given, or null if there is none.
    TCommand* Command() const
    {
        const auto found = std::find_if(FCommands.begin(), FCommands.end(),
            [this](const TCommandPtr& command) { return FApp.got_subcommand(command->Name()); });
        return found == FCommands.end() ? nullptr : found->get();
    }

    QString DataFolder() const { return FDataFolder; }

    QString Help() const
    {
        // The parser leaves two blank lines between groups of options.
        return QString::fromStdString(FApp.help()).replace("\n\n\n"_L1, "\n\n"_L1);
    }

    // Returns the text for `error`. For an unknown command the parser's own text would be misleading.
    QString TextOf(const CLI::ParseError& error) const
    {
        const std::vector<std::string> unknown = FApp.remaining();
        if (!Command() && !unknown.empty() && unknown.front().rfind('-', 0) != 0)
            return u"'%1' is no command"_s.arg(QString::fromStdString(unknown.front()));
        return QString::fromUtf8(error.what());
    }

    // Returns the command line that prints the help of the given command: "corvadine-cli set --help".
    QString HelpCommand() const
    {
        const TCommand* const command = Command();
        const QString name = command ? QLatin1String(command->Name()) + u' ' : QString();
        return u"corvadine-cli %1--help"_s.arg(name);
    }

private:
    static constexpr std::size_t HelpColumn = 26;

    void DeclareCommand(TCommand& command)
    {
        CLI::App& app = *FApp.add_subcommand(command.Name(), command.Description());
        app.group("Commands");
        app.fallthrough(); // the program's own options may also follow the command
        app.footer(CommonOptionsHelp);
        command.Declare(app);
    }

    void SetDataFolder(const QString& folder)
    {
        if (folder.isEmpty()) // an unset variable of a script must not select another database
            throw TError(TErrorKind::Usage, u"a folder is required"_s);
        FDataFolder = folder;
    }

    CLI::App FApp;
    std::vector<TCommandPtr> FCommands = MakeCommands();
    QString FDataFolder; // empty: the program's own folder
};

// Returns the form of the output. Called before parsing, because errors of parsing are printed in this
// form, too.
TOutputForm FormOf(const QStringList& arguments)
{
    return arguments.contains("--json"_L1) ? TOutputForm::Json : TOutputForm::Text;
}

TCommandResult TextResult(const char* member, const QString& text)
{
    return { { { QLatin1String(member), text } }, text.trimmed().split(u'\n') };
}

TCommandResult WrongUsage(const TCommandLine& line, const QString& text)
{
    TCommandResult result;
    result.Error = u"Wrong usage: %1 (see %2)"_s.arg(text, line.HelpCommand());
    result.Exit = TExit::WrongUsage;
    return result;
}

TCommandResult RunLine(const QStringList& arguments, const TCliEnvironment& environment, TCliOutput& output)
{
    TCommandLine line;
    try {
        line.Parse(arguments);
    } catch (const CLI::CallForHelp&) {
        return TextResult("help", line.Help());
    } catch (const CLI::CallForVersion&) {
        return TextResult("version", QStringLiteral("corvadine-cli " CORVADINE_VERSION));
    } catch (const CLI::ParseError& error) {
        return WrongUsage(line, line.TextOf(error));
    } catch (const TError& error) {
        return WrongUsage(line, error.Text());
    }
    TCommand* const command = line.Command();
    if (!command)
        return arguments.isEmpty() ? TextResult("help", line.Help())
                                   : WrongUsage(line, u"a command is required"_s);
    TCliContext context(environment, output, line.DataFolder());
    return command->Run(context);
}

// Returns the result of RunLine(). If RunLine() throws, returns the result FailureOf() the exception.
TCommandResult ResultOf(const QStringList& arguments, const TCliEnvironment& environment, TCliOutput& output)
{
    try {
        return RunLine(arguments, environment, output);
    } catch (...) {
        return FailureOf(std::current_exception());
    }
}

} // namespace

int RunCli(const QStringList& arguments, const TCliEnvironment& environment)
{
    try {
        TCliOutput output(environment.Out, environment.Err, FormOf(arguments));
        const TCommandResult result = ResultOf(arguments, environment, output);
        output.Finish(result);
        return static_cast<int>(result.Exit);
    } catch (...) { // the result cannot be printed, for example because there is no memory
        return static_cast<int>(TExit::Failed);
    }
}

} // namespace Corvadine
