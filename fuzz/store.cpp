// SPDX-License-Identifier: GPL-3.0-or-later
// The bytes of a store file. It is refused and left as it is, or it opens, and then reading all of it, changing a
// record and saving end in success or in an error value.
#include "foundation/log.h"
#include "fuzz/property.h"
#include "objectstore/library.h"

#include <fstream>
#include <iterator>

namespace {

using namespace objectstore;
namespace fs = std::filesystem;

std::string contents(const fs::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void clear(const fs::path &folder)
{
    for (const auto &entry : fs::directory_iterator(folder))
        fs::remove(entry.path());
}

void read(const ManagedObject &object)
{
    for (const Property *column : object.entity().columns()) {
        if (column->isToOne())
            static_cast<void>(object.related(*column));
        else
            static_cast<void>(object.value(*column));
    }
    for (const Property *relationship : object.entity().toManyRelationships())
        static_cast<void>(object.objects(*relationship));
}

void use(Store &store)
{
    ObjectContext context(store, MergePolicy::StoreTrump);
    for (const auto &entity : library::model().entities()) {
        const auto objects = context.fetch(
            {.entity = entity->name(), .predicate = {}, .sortDescriptors = {{.key = "title"}}, .limit = 1000});
        fuzz::require(objects || !objects.error().message.empty(), "a failed read has a sentence");
        if (!objects)
            continue;
        for (const ManagedObject *object : *objects)
            read(*object);
        if (!objects->empty())
            objects->front()->setValue("title", std::string("Changed"));
    }
    context.insert("Book").setValue("title", std::string("New"));
    const auto saved = context.save();
    fuzz::require(saved || !saved.error().message.empty(), "a failed save has a sentence");
    fuzz::require(saved.has_value() != context.hasChanges(), "a failed save keeps the changes, and no other does");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const support::TemporaryFolder folder;
    static const support::TestClock clock;
    foundation::setLogSink([](std::string_view) {});
    const fs::path file = folder.path() / "books.store";
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    std::ofstream(file, std::ios::binary) << bytes;

    {
        const auto store = Store::open(library::model(), file, clock);
        if (store) {
            use(**store);
        } else {
            fuzz::require(!store.error().message.empty(), "a refusal is a sentence");
            fuzz::require(contents(file) == bytes, "what is refused is left as it is", store.error().detail);
        }
    }
    clear(folder.path());
    return 0;
}
