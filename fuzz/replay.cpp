// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds a target the files that the command line names, and those in the folders that it names.
#include "fuzz/property.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

void replay(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    fuzz::require(stream.good() || stream.eof(), "every input can be read", file.string());
    std::fprintf(stderr, "%s\n", file.c_str()); // so that the last line before a crash names its input
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int count, char **arguments)
{
    int replayed = 0;
    for (int i = 1; i < count; ++i) {
        const std::filesystem::path path(arguments[i]);
        if (!std::filesystem::is_directory(path)) {
            replay(path);
            ++replayed;
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(path)) {
            replay(entry.path());
            ++replayed;
        }
    }
    fuzz::require(replayed > 0, "there are inputs to replay");
    std::fprintf(stderr, "%d inputs replayed\n", replayed);
    return 0;
}
