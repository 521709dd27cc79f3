// SPDX-License-Identifier: GPL-3.0-or-later
// Files to import, and on their first line a date as people type it. What is read and written again reads as the same,
// in either form; an import ends in success or in a sentence.
#include "cli/csv.h"
#include "cli/date_reader.h"
#include "cli/exchange_format.h"
#include "cli/importer.h"
#include "fuzz/property.h"
#include "support/test_store.h"

namespace {

void checkDate(std::string_view text)
{
    const foundation::Instant now = support::at("2026-11-24 09:00");
    const auto date = cli::readDate(text, now);
    if (!date) {
        fuzz::require(!date.error().message.empty(), "a refusal is a sentence", text);
        return;
    }
    const int year = foundation::toLocal(*date).year;
    const auto again = cli::readDate(foundation::toIso8601(*date), now);
    fuzz::require(year == 0 || year == 9999 || (again && *again == *date), "a date reads back", text);
}

void checkCsv(std::string_view text)
{
    const auto rows = cli::readCsv(text);
    if (!rows)
        return;
    std::string written;
    for (const cli::CsvRow &row : *rows)
        cli::appendCsv(written, row);
    const auto again = cli::readCsv(written);
    fuzz::require(again && *again == *rows, "a table reads back", written);
}

void import(const std::vector<cli::FileRecord> &records)
{
    static auto store = std::make_unique<support::TestStore>();
    static std::size_t imports = 0;
    if (++imports % 256 == 0)
        store = std::make_unique<support::TestStore>();
    const auto counts = cli::Importer(store->moc()).add(records);
    fuzz::require(counts || !counts.error().message.empty(), "a refusal is a sentence");
    store->moc().rollback();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::Input input(data, size);
    checkDate(input.line());
    const std::string_view text = input.rest();
    checkCsv(text);

    const auto records = cli::readRecords(text);
    if (!records) {
        fuzz::require(!records.error().message.empty(), "a refusal is a sentence", text);
        return 0;
    }
    const std::string json = cli::writeJson(*records);
    const auto fromJson = cli::readRecords(json);
    fuzz::require(fromJson && cli::writeJson(*fromJson) == json, "records read back from JSON", json);
    const std::string csv = cli::writeCsv(*records);
    const auto fromCsv = cli::readRecords(csv);
    fuzz::require(fromCsv && cli::writeCsv(*fromCsv) == csv, "records read back from CSV", csv);
    import(*records);
    return 0;
}
