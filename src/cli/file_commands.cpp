// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_error.h"
#include "cli/commands.h"
#include "cli/exchange_format.h"
#include "cli/exporter.h"
#include "cli/importer.h"
#include "cli/text.h"
#include "cli/workplace.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

namespace cli {

using foundation::Failure;
using foundation::Result;

namespace {

Result<std::string> contentOf(const std::string &file)
{
    std::ifstream opened;
    if (file != "-")
        opened.open(file, std::ios::binary);
    std::istream &stream = file == "-" ? std::cin : opened;
    std::string content{std::istreambuf_iterator<char>(stream), {}};
    std::error_code error(errno, std::generic_category());
    if (file != "-" && (!opened.is_open() || std::filesystem::is_directory(file)))
        return notUnderstood("The file " + inQuotes(file) + " cannot be read"
            + (opened.is_open() ? std::string(": it is a folder.") : ": " + error.message() + "."));
    if (stream.bad())
        return failed("The file " + inQuotes(file) + " could not be read to its end.");
    if (!isUtf8(content))
        return notUnderstood("The file " + inQuotes(file) + " is not text in UTF-8.");
    return content;
}

std::string counted(const RecordKind &kind, std::size_t number)
{
    return std::to_string(number) + " " + std::string(number == 1 ? kind.word : kind.list);
}

} // namespace

Done importFile(Workplace &workplace, const Arguments &arguments)
{
    const auto content = contentOf(arguments.operands.front());
    if (!content)
        return Failure(content.error());
    const auto records = readRecords(*content);
    if (!records)
        return Failure(records.error());
    auto moc = workplace.context();
    if (!moc)
        return Failure(std::move(moc.error()));
    const auto pause = workplace.tracking().pause(); // the dates of modification are the file's
    const auto counts = Importer(**moc).add(*records);
    if (!counts)
        return Failure(counts.error());
    if (auto saved = workplace.save(); !saved)
        return saved;
    std::string sentence;
    for (const RecordKind &kind : recordKinds()) {
        if (const auto count = counts->find(&kind); count != counts->end())
            sentence += (sentence.empty() ? "Added " : ", ") + counted(kind, count->second);
    }
    workplace.out += (sentence.empty() ? "Nothing was added" : sentence) + ".\n";
    return {};
}

Done exportStore(Workplace &workplace, const Arguments &arguments)
{
    struct Format {
        std::string_view name;
        std::string (*write)(const std::vector<FileRecord> &);
    };
    static constexpr std::array<Format, 2> formats{{{"json", writeJson}, {"csv", writeCsv}}};
    const std::string wanted = arguments.value("format").value_or("json");
    for (const Format &format : formats) {
        if (format.name != wanted)
            continue;
        auto moc = workplace.context();
        if (!moc)
            return Failure(std::move(moc.error()));
        const auto records = exportedRecords(**moc);
        if (!records)
            return Failure(records.error());
        workplace.out += format.write(*records);
        return {};
    }
    return notUnderstood("There is no format " + inQuotes(wanted) + ": write json or csv.");
}

} // namespace cli
