// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/ledger_book.h"

#include <gmock/gmock.h>
#include <map>

using syncing::LedgerBook;
using syncing::LedgerNote;

namespace {

/// The pages as a store holds them.
using Pages = std::map<std::int64_t, objectstore::Bytes>;

int write(LedgerBook &book, Pages &pages)
{
    int written = 0;
    book.writeChangedPages([&](std::int64_t &key, const objectstore::Bytes &bytes) {
        ++written;
        if (key == 0)
            key = pages.empty() ? 1 : pages.rbegin()->first + 1;
        if (bytes.empty())
            pages.erase(key);
        else
            pages[key] = bytes;
    });
    return written;
}

LedgerBook read(const Pages &pages)
{
    LedgerBook book;
    for (const auto &[key, bytes] : pages)
        EXPECT_TRUE(book.addPage(key, bytes));
    return book;
}

/// Each has another choice of what is known.
LedgerNote noteOf(std::int64_t number)
{
    LedgerNote note;
    note.folder = number * 7;
    note.context = -number;
    note.sentFolder = (number & 4) != 0 ? number * 11 : 0; // known only of what is on the way
    std::int64_t bit = 1;
    for (auto *mark : {&note.server, &note.local, &note.sent, &note.replaced}) {
        if (number & bit)
            *mark = number * 1000003 + bit;
        bit <<= 1;
    }
    for (auto *date : {&note.serverDate, &note.replacedDate}) {
        if (number & bit)
            *date = foundation::Instant{static_cast<double>(number) + 0.5};
        bit <<= 1;
    }
    if (number & bit)
        note.source = static_cast<toodledo::SourceMark>(number);
    return note;
}

testing::Matcher<const LedgerNote &> is(const LedgerNote &note)
{
    return testing::AllOf(testing::Field(&LedgerNote::server, note.server),
        testing::Field(&LedgerNote::serverDate, note.serverDate), testing::Field(&LedgerNote::folder, note.folder),
        testing::Field(&LedgerNote::context, note.context), testing::Field(&LedgerNote::local, note.local),
        testing::Field(&LedgerNote::sent, note.sent), testing::Field(&LedgerNote::sentFolder, note.sentFolder),
        testing::Field(&LedgerNote::replaced, note.replaced),
        testing::Field(&LedgerNote::replacedDate, note.replacedDate), testing::Field(&LedgerNote::source, note.source));
}

void expectNotes(const LedgerBook &book, const std::map<std::int64_t, LedgerNote> &expected)
{
    std::size_t number = 0;
    book.forEach([&](std::int64_t record, const LedgerNote &note) {
        ++number;
        ASSERT_TRUE(expected.contains(record)) << record;
        EXPECT_THAT(note, is(expected.at(record))) << record;
    });
    EXPECT_EQ(number, expected.size());
}

} // namespace

TEST(LedgerBook, keepsEachNoteInItsPagesAndWritesOnlyThoseThatChanged)
{
    LedgerBook book;
    Pages pages;
    std::map<std::int64_t, LedgerNote> expected;
    for (std::int64_t record = 1; record <= 300; ++record)
        book.edit(record) = expected[record] = noteOf(record);
    EXPECT_EQ(write(book, pages), 3);
    EXPECT_EQ(write(book, pages), 0);

    LedgerBook later = read(pages);
    expectNotes(later, expected);
    later.edit(5) = expected[5] = noteOf(77);
    later.edit(301) = expected[301] = noteOf(301);
    later.erase(130);
    expected.erase(130);
    EXPECT_EQ(write(later, pages), 3);
    expectNotes(read(pages), expected);

    for (std::int64_t record = 1; record <= 128; ++record) {
        later.erase(record);
        expected.erase(record);
    }
    EXPECT_EQ(write(later, pages), 1);
    EXPECT_EQ(pages.size(), 2U) << "an empty page remains";
    expectNotes(read(pages), expected);
    later.clear();
    write(later, pages);
    EXPECT_TRUE(pages.empty());
}

TEST(LedgerBook, readsWhatIsLeftOfADamagedPage)
{
    LedgerBook book;
    Pages pages;
    for (std::int64_t record = 1; record <= 20; ++record)
        book.edit(record) = noteOf(record);
    write(book, pages);
    const objectstore::Bytes whole = pages.at(1);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        LedgerBook damaged;
        const bool isWhole = damaged.addPage(1, std::span(whole).first(size));
        std::map<std::int64_t, LedgerNote> left;
        damaged.forEach([&](std::int64_t record, const LedgerNote &note) { left[record] = note; });
        for (const auto &[record, note] : left)
            EXPECT_THAT(note, is(noteOf(record)));
        Pages mended{{1, objectstore::Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))}};
        const bool isToBeMended = !isWhole || left.empty(); // whole where it is cut just behind a note
        EXPECT_EQ(write(damaged, mended), isToBeMended ? 1 : 0) << size;
        expectNotes(read(mended), left);
    }
    LedgerBook other;
    objectstore::Bytes later = whole;
    later.front() = std::byte{9};
    EXPECT_FALSE(other.addPage(1, later)) << "a form that is not known was read";
}
