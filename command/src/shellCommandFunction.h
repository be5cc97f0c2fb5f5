// SPDX-License-Identifier: MIT
/// One handler of a command, in any of the forms that an application can give it.
#ifndef CORVANE_COMMAND_SHELLCOMMANDFUNCTION_H
#define CORVANE_COMMAND_SHELLCOMMANDFUNCTION_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace Corvane::CmdTableHelper {

/// Holds a handler, or nothing, with value semantics: a copy holds a copy of the handler.
///
/// Threads  one thread may assign to an object while others call callCommandHandlerFunction(). A call that has begun
///          goes on with the function that it began with, which lives until its last call is over; a function may also
///          replace itself. All other operations need a lock of the caller's, as with any value.
class ShellCommandFunction
{
public:
    using ArgvFunction = std::function<int(int, const char* const*)>;
    using ArgvStreamFunction = std::function<int(int, const char* const*, std::ostream&)>;
    using WordsFunction = std::function<int(const std::vector<std::string>&)>;
    using WordsStreamFunction = std::function<int(const std::vector<std::string>&, std::ostream&)>;

    /// What may be held. index() is a part of the contract, so a test pins the order.
    using Function = std::variant<std::monostate, ArgvFunction, ArgvStreamFunction, WordsFunction, WordsStreamFunction>;

    /// A function that lives on while somebody shares it.
    using SharedFunction = std::shared_ptr<const Function>;

    ShellCommandFunction() = default;
    ShellCommandFunction(ArgvFunction function);
    ShellCommandFunction(ArgvStreamFunction function);
    ShellCommandFunction(WordsFunction function);
    ShellCommandFunction(WordsStreamFunction function);

    ShellCommandFunction(const ShellCommandFunction& other);
    ShellCommandFunction(ShellCommandFunction&& other) noexcept;
    ShellCommandFunction& operator=(const ShellCommandFunction& other);
    ShellCommandFunction& operator=(ShellCommandFunction&& other) noexcept;
    ~ShellCommandFunction() = default;

    /// Calls the handler with a line of `argc` words, the command's name included.
    ///
    /// Returns  what the handler returned; -1 if nothing is held.
    /// Errors   std::bad_function_call for an empty std::function; std::logic_error for a null word where the handler
    ///          takes strings; what the handler throws.
    int callCommandHandlerFunction(int argc, const char* const* argv, std::ostream& out) const;

    /// The same for a caller that took function() earlier, under a lock: now it takes none, unless the function has
    /// been replaced meanwhile.
    int callCommandHandlerFunction(SharedFunction earlier, int argc, const char* const* argv, std::ostream& out) const;

    /// Returns  the function that is held; null if nothing is.
    const SharedFunction& function() const noexcept { return m_function; }

    /// Returns  which alternative of Function is held.
    std::size_t index() const noexcept;

    /// Returns  whether a function is held (it may be an empty std::function).
    bool hasFunction() const noexcept { return index() != 0; }

    /// Gives this object the other's function and the other this one's.
    ///
    /// Requires `other` is another object.
    /// Threads  others may call this object's function meanwhile; `other` must not be in use.
    void swap(ShellCommandFunction& other) noexcept;

private:
    explicit ShellCommandFunction(SharedFunction function) noexcept;

    // Null if nothing is held. Behind a pointer, because a registration may replace the function while another thread
    // calls it: each call shares the function that it began with, and no lock is held while a handler runs. Two objects
    // never share a function.
    SharedFunction m_function;
    // The same pointer, for those who only ask whether they have the function that is held.
    std::atomic<const Function*> m_current{nullptr};
};

} // namespace Corvane::CmdTableHelper

#endif
