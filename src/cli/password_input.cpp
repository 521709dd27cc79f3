// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/password_input.h"

#include "cli/command_error.h"
#include "cli/text.h"

#include <cstdio>
#include <iostream>
#include <optional>
#include <termios.h>
#include <unistd.h>

namespace cli {

namespace {

/// Turns the echo of a terminal off while it lives.
class SilentTerminal
{
public:
    SilentTerminal()
    {
        termios silent{};
        if (!::isatty(STDIN_FILENO) || ::tcgetattr(STDIN_FILENO, &silent) != 0)
            return;
        m_before = silent;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
        std::cerr << "Password: " << std::flush;
    }
    SilentTerminal(const SilentTerminal &) = delete;
    SilentTerminal &operator=(const SilentTerminal &) = delete;
    ~SilentTerminal()
    {
        if (m_before) {
            ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &*m_before);
            std::cerr << '\n';
        }
    }

private:
    std::optional<termios> m_before;
};

} // namespace

foundation::Result<std::string> readPassword()
{
    const SilentTerminal silent;
    std::string password;
    if (!std::getline(std::cin, password))
        return notUnderstood("There is no password on standard input.");
    if (password.ends_with('\r'))
        password.pop_back();
    if (!isUtf8(password))
        return notUnderstood("The password is not text in UTF-8.");
    return password;
}

} // namespace cli
