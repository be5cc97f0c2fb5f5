// SPDX-License-Identifier: MIT
/// Calls a handler of any form with one command line.
#include "command/src/shellCommandFunction.h"

#include <utility>

namespace Corvane::CmdTableHelper {

namespace {

constexpr int noHandler = -1;

/// Has the call operators of all the lambdas that it is made of.
template <typename... Callables>
struct overload : Callables...
{
    using Callables::operator()...;
};
template <typename... Callables>
overload(Callables...) -> overload<Callables...>;

std::vector<std::string> wordsOf(int argc, const char* const* argv)
{
    if (argc <= 0) {
        return {};
    }
    return {argv, argv + argc};
}

} // namespace

ShellCommandFunction::ShellCommandFunction(ArgvFunction function)
    : m_function(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(ArgvStreamFunction function)
    : m_function(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(WordsFunction function)
    : m_function(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(WordsStreamFunction function)
    : m_function(std::make_shared<const Function>(std::move(function)))
{
}

ShellCommandFunction::ShellCommandFunction(const ShellCommandFunction& other)
{
    if (const auto function = std::atomic_load(&other.m_function)) {
        m_function = std::make_shared<const Function>(*function);
    }
}

ShellCommandFunction::ShellCommandFunction(ShellCommandFunction&& other) noexcept
{
    swap(other);
}

ShellCommandFunction& ShellCommandFunction::operator=(const ShellCommandFunction& other)
{
    ShellCommandFunction copy(other);
    swap(copy);
    return *this;
}

ShellCommandFunction& ShellCommandFunction::operator=(ShellCommandFunction&& other) noexcept
{
    ShellCommandFunction taken(std::move(other));
    swap(taken);
    return *this;
}

int ShellCommandFunction::callCommandHandlerFunction(int argc, const char* const* argv, std::ostream& out) const
{
    // Keeps the function alive while it runs, even if the object gets another one meanwhile.
    const auto function = std::atomic_load(&m_function);
    if (!function) {
        return noHandler;
    }
    const auto call = overload{[](std::monostate) { return noHandler; },
                               [&](const ArgvFunction& handler) { return handler(argc, argv); },
                               [&](const ArgvStreamFunction& handler) { return handler(argc, argv, out); },
                               [&](const WordsFunction& handler) { return handler(wordsOf(argc, argv)); },
                               [&](const WordsStreamFunction& handler) { return handler(wordsOf(argc, argv), out); }};
    return std::visit(call, *function);
}

std::size_t ShellCommandFunction::index() const noexcept
{
    return m_function ? m_function->index() : 0;
}

void ShellCommandFunction::swap(ShellCommandFunction& other) noexcept
{
    other.m_function = std::atomic_exchange(&m_function, std::move(other.m_function));
}

} // namespace Corvane::CmdTableHelper
