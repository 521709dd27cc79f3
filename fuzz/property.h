// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// What a fuzz target is, declared for the compiler's sake; libFuzzer and `replay.cpp` call it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace fuzz {

/// Ends the program, as a crash would, when a property does not hold.
inline void require(bool holds, const char *property, std::string_view shown = {})
{
    if (holds)
        return;
    std::fprintf(stderr, "Broken property: %s\n", property);
    std::fwrite(shown.data(), 1, shown.size(), stderr);
    std::fputc('\n', stderr);
    std::abort();
}

/// Takes an input apart from its front.
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size) : m_rest(reinterpret_cast<const char *>(data), size) { }

    [[nodiscard]] bool isEmpty() const { return m_rest.empty(); }

    /// The next byte, 0 past the end.
    std::uint8_t byte()
    {
        if (m_rest.empty())
            return 0;
        const auto first = static_cast<std::uint8_t>(m_rest.front());
        m_rest.remove_prefix(1);
        return first;
    }

    /// What comes before the next line end, which goes too.
    std::string_view line()
    {
        const std::string_view taken = m_rest.substr(0, m_rest.find('\n'));
        m_rest.remove_prefix(taken.size() == m_rest.size() ? taken.size() : taken.size() + 1);
        return taken;
    }

    [[nodiscard]] std::string_view rest() const { return m_rest; }

private:
    std::string_view m_rest;
};

} // namespace fuzz
