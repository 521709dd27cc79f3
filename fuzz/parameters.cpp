// SPDX-License-Identifier: GPL-3.0-or-later
// Values of requests, one a line: the first is the key. However a title is made, it cannot end its parameter, begin
// another one or change the method; and no secret passes the log.
#include "foundation/log.h"
#include "fuzz/property.h"
#include "toodledo/td_request.h"

namespace {

using toodledo::Parameters;

constexpr std::string_view method = "host/api.php?method=editTask;";

std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        fuzz::require(i + 2 < text.size(), "an escape has two digits", text);
        result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
        i += 2;
    }
    return result;
}

/// Splits a query as any server of the protocol does.
Parameters parametersOf(std::string_view url)
{
    Parameters parameters;
    for (std::string_view rest = url; !rest.empty();) {
        const std::size_t end = rest.find(';');
        fuzz::require(end != std::string_view::npos, "every parameter ends", url);
        const std::string_view pair = rest.substr(0, end);
        rest.remove_prefix(end + 1);
        const std::size_t equals = pair.find('=');
        fuzz::require(equals != std::string_view::npos, "every parameter has a value", url);
        parameters.emplace_back(pair.substr(0, equals), unescaped(pair.substr(equals + 1)));
    }
    return parameters;
}

bool isPlainAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f' && c != '#' && c != '"'; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    const std::string key(input.line());
    Parameters parameters;
    for (char name = 'a'; !input.isEmpty() && name <= 'z'; ++name)
        parameters.emplace_back(std::string(1, name), std::string(input.line()));

    const std::string url = toodledo::authenticatedUrl(method, {key, true, true}, parameters);
    const std::string start = "https://" + std::string(method);
    fuzz::require(url.starts_with(start), "host and method stand in front", url);
    fuzz::require(isPlainAscii(url), "a URL holds only what a request line may", url);
    Parameters expected{{"key", key}};
    expected.insert(expected.end(), parameters.begin(), parameters.end());
    fuzz::require(parametersOf(std::string_view(url).substr(start.size())) == expected, "what was sent arrives", url);

    const std::string whole = toodledo::authenticatedUrl(method, {key, false, false}, parameters);
    fuzz::require(isPlainAscii(whole), "a URL that is escaped whole holds only what a request line may", whole);

    const std::string plain = toodledo::plainUrl(method, {{"email", "name"}, {"pass", key}});
    fuzz::require(foundation::redacted(plain).ends_with(";pass=***;"), "no password is logged", plain);
    fuzz::require(foundation::redacted(url).starts_with(start + "key=***;"), "nor is a key", url);
    return 0;
}
