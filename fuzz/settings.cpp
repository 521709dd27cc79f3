// SPDX-License-Identifier: GPL-3.0-or-later
// The bytes of a settings file. Either it is read, and then what was read survives being written; or it is kept aside
// byte for byte and the defaults hold.
#include "foundation/settings.h"
#include "foundation/log.h"
#include "fuzz/property.h"
#include "support/temporary_folder.h"

#include <cmath>
#include <fstream>
#include <iterator>

namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool same(const foundation::SettingValue &a, const foundation::SettingValue &b)
{
    const auto *left = std::get_if<double>(&a);
    const auto *right = std::get_if<double>(&b);
    return (left && right && std::isnan(*left) && std::isnan(*right)) || a == b;
}

bool same(const foundation::SettingsTable &a, const foundation::SettingsTable &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto &left, const auto &right) {
        return left.first == right.first && same(left.second, right.second);
    });
}

void askForEverything(const foundation::Settings &settings)
{
    for (const auto &[key, value] : settings.all()) {
        static_cast<void>(settings.boolean(key));
        static_cast<void>(settings.integer(key));
        static_cast<void>(settings.text(key));
        static_cast<void>(settings.date(key));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const support::TemporaryFolder folder;
    foundation::setLogSink([](std::string_view) {});
    const fs::path path = folder.path() / "settings.json";
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    std::ofstream(path, std::ios::binary) << bytes;

    foundation::JsonSettingsFile file(path);
    const auto table = file.read();
    if (!table) {
        fuzz::require(!fs::exists(path), "a damaged file is moved out of the way");
        for (const auto &entry : fs::directory_iterator(folder.path()))
            fuzz::require(contents(entry.path()) == bytes, "what was moved away is whole", entry.path().string());
        for (const auto &entry : fs::directory_iterator(folder.path()))
            fs::remove(entry.path());
        return 0;
    }
    fuzz::require(contents(path) == bytes, "reading changes nothing");
    const foundation::Settings settings(file, {{"ReplyLimit", std::int64_t{128}}});
    askForEverything(settings);

    fuzz::require(file.write(*table).has_value(), "what was read can be written");
    const auto again = file.read();
    fuzz::require(again && same(*again, *table), "what was written reads back", contents(path));
    for (const auto &entry : fs::directory_iterator(folder.path()))
        fs::remove(entry.path());
    return 0;
}
