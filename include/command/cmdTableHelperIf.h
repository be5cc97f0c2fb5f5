// SPDX-License-Identifier: MIT
/// Command tables: typed lines are matched against the synopses of all registered commands and run their handlers.
///
/// There is one service in a process, reached through getInstance(). An application registers tables of commands,
/// hands over lines as vectors of words, and may have hooks called after every command that ran. All registered
/// synopses share one syntax graph. Commands stay registered until the end of the process; a handler can be replaced.
///
/// Threads  every operation may be called by any thread at any time, also from inside handlers and hooks, and while the
///          process ends. Registration and matching exclude each other. Handlers and hooks run on the calling thread,
///          without a lock.
/// Errors   the service throws nothing of its own. What handlers, hooks, std::function (std::bad_function_call for an
///          empty handler), allocation and the locks throw reaches the caller, and the service stays usable.
/// Since    0.1.0
#ifndef CORVANE_COMMAND_CMDTABLEHELPERIF_H
#define CORVANE_COMMAND_CMDTABLEHELPERIF_H

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include <command/cmdDefinitions.h>

namespace Corvane::CmdTableHelper::V2 {

class CmdTableHelperImpl;

class [[gnu::visibility("default")]] CmdTableHelperIf
{
public:
    /// The service is made on the first call and is there as long as the process lives.
    ///
    /// When the process destroys its static objects, or unloads the library, the service's state ends: all handlers and
    /// hooks are released, and one that runs lives until it returns. What they own may use the service when it is
    /// destroyed. From then on no line leads to a handler, and commands and hooks that are registered are dropped.
    ///
    /// Returns  the one service of this process.
    /// Threads  any, also while static objects are destroyed and after. A library that is unloaded must not be in use.
    static CmdTableHelperIf& getInstance();

    /// Adds the synopses of a table to the syntax graph and makes `commandName` a command.
    ///
    /// A synopsis that ends where an earlier one does replaces its handler. A call of the earlier handler that has
    /// begun goes on, and keeps that handler alive. A line that has been matched but whose handler has not begun runs
    /// the new one.
    ///
    /// If no registered synopsis begins with `commandName` itself, the name stands for a placeholder at the beginning
    /// of a synopsis, such as `<verb> on`, whichever table it is in. With one such placeholder in all tables, the name
    /// is bound to it for good; with several, executeCmd() chooses among them as anywhere in a line; with none, the
    /// command can't be reached. A later synopsis that begins with the name itself takes the name over, unless that
    /// word is a placeholder.
    ///
    /// A synopsis with unbalanced brackets is registered as far as it can be read, and reported by the event ERROR.
    ///
    /// Requires  `commandName` is the word by which lines call this table's commands. An empty name adds the synopses
    ///           and no command.
    /// Errors    std::bad_alloc; synopses that were added before it stay. The one that failed replaces no handler, but
    ///           some of its words may show in usage lines.
    /// Owns      copies the synopses and the handlers; `table` may be destroyed after the call.
    void registerCmdTable(const std::string& commandName, const std::vector<CommandDefinitions>& table);
    void registerCmdTable(const std::string& commandName, const std::vector<CmdDefinition>& table);
    void registerCmdTable(const std::string& commandName, const std::vector<CmdDefinitionCpp>& table);

    /// Matches one line and runs the handler that it leads to, then the hooks.
    ///
    /// The first word must be a registered command name, exactly; the first word of a synopsis alone is not enough. A
    /// synopsis all of which may be left out, such as `[status]` or an empty one, catches the empty line and every line
    /// whose first word leads nowhere.
    ///
    /// A keyword is preferred to a placeholder, and of several placeholders the first registered that leads to a
    /// handler is taken. Words after the end of a synopsis don't matter; the handler gets them all the same.
    ///
    /// A line that leads to no handler runs nothing. What may be typed instead is written to `out`: "Usage: ", the
    /// words that were understood, up to 65,536 words that may follow, and an empty line. The usage of a line whose
    /// first word is "pelm", a command or not, has a format of its own. Some groups are written there in compact form,
    /// for example `[-l <file>]` at the end of a synopsis.
    ///
    /// Requires  `out` doesn't use the service: while a usage is written, registration and matching wait. The copy
    ///           constructors of handlers and hooks don't use it either; they run under its locks.
    ///           Each word is a C string to the matching, to every handler and to the hooks: it ends at its first NUL.
    /// Returns   what the handler returned; 20 if the line led to no handler.
    /// Errors    what the handler or a hook throws. After a handler has thrown no hook runs; after a hook has thrown
    ///           those behind it don't run, and the handler's result is lost.
    int executeCmd(const std::vector<std::string>& words, std::ostream& out);

    /// The same with std::cout as `out`.
    int executeCmd(const std::vector<std::string>& words);

    /// Writes the help of a table: its synopses, and in long mode the descriptions, wrapped at a blank after column 70.
    /// The help of a table whose handlers get no stream is written to std::cout.
    ///
    /// Long mode is on if one of `words`, from the third on, is "-l". Long mode never writes the final line feed.
    ///
    /// Requires  `words` is the line that asked for help, for example "help show -l".
    /// Returns   1, always.
    /// Threads   any; only the arguments are used.
    int cmdHelp(const std::vector<std::string>& words, const std::vector<CommandDefinitions>& table, bool printHeader,
                bool finalNewline);
    int cmdHelp(const std::vector<std::string>& words, std::ostream& out, const std::vector<CmdDefinition>& table,
                bool printHeader, bool finalNewline);
    int cmdHelp(const std::vector<std::string>& words, std::ostream& out, const std::vector<CmdDefinitionCpp>& table,
                bool printHeader, bool finalNewline);

    /// Has `hook` called after every command that ran, with the handler's result, the number of words and the words.
    ///
    /// Hooks run in the order of their registration. One that is registered while hooks run is called from the next
    /// command on. One that throws keeps the hooks behind it from being called after that command.
    ///
    /// Returns  the id to deregister it with: 1, 2, 3, ... An id is not used again before all 2^32 have been.
    /// Owns     copies `hook`. The hook is copied for every command: keep its state outside it.
    unsigned int registerPostExecutionHook(const std::function<void(int, int, const char* const*)>& hook);

    /// Deregisters a hook. If its turn has not come it is not called any more. If its turn has come on another thread,
    /// the hook may still run, or even begin, after this has returned.
    ///
    /// Requires  nothing: an id that is not registered is ignored.
    void deregisterPostExecutionHook(unsigned int id);

    CmdTableHelperIf(const CmdTableHelperIf&) = delete;
    CmdTableHelperIf& operator=(const CmdTableHelperIf&) = delete;

private:
    CmdTableHelperIf();
    [[gnu::visibility("hidden")]] explicit CmdTableHelperIf(CmdTableHelperImpl * impl);
    ~CmdTableHelperIf();

    CmdTableHelperImpl* m_impl;
};

} // namespace Corvane::CmdTableHelper::V2

#endif
