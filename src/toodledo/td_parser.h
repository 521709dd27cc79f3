// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace toodledo {

using TDError = foundation::Error;

inline constexpr const char *xmlErrorDomain = "TDXmlErrorDomain";

/// The attributes of one start tag, valid while it is handled.
class Attributes
{
public:
    explicit Attributes(const char *const *pairs) : m_pairs(pairs) { }

    /// The value of attribute `name`, or nothing.
    [[nodiscard]] std::optional<std::string_view> find(std::string_view name) const
    {
        for (const char *const *pair = m_pairs; *pair; pair += 2)
            if (name == *pair)
                return pair[1];
        return std::nullopt;
    }

    /// The value of attribute `name`, or an empty text.
    [[nodiscard]] std::string_view value(std::string_view name) const { return find(name).value_or(""); }

private:
    const char *const *m_pairs;
};

/// Reads one reply as its bytes arrive; subclasses make results of its elements. Whatever the bytes are, it ends in
/// results or in an error: a document type, markup nested or named beyond all reason, texts and lists longer than
/// memory is to hold, or an encoding other than UTF-8, UTF-16, ISO 8859-1 and ASCII is refused.
class TDParser
{
public:
    TDParser();
    virtual ~TDParser();
    TDParser(const TDParser &) = delete;
    TDParser &operator=(const TDParser &) = delete;

    /// Takes the next bytes; false when the reply is already known to be bad.
    virtual bool feed(std::string_view bytes) noexcept;
    /// Says that the last byte has been fed; false when the reply was not well-formed.
    virtual bool finish() noexcept;
    /// A whole reply at once.
    bool parse(std::string_view reply) { return feed(reply) && finish(); }

    [[nodiscard]] const std::optional<TDError> &error() const { return m_error; }
    /// The name of the outermost element.
    [[nodiscard]] const std::string &root() const { return m_root; }
    /// The texts of all `error` elements of a well-formed reply.
    [[nodiscard]] const std::vector<std::string> &errorTexts() const { return m_errorTexts; }

protected:
    virtual void didStartElement(std::string_view name, const Attributes &attributes);
    /// `text` is the element's text, without the blanks at both ends of each piece between two tags.
    virtual void didEndElement(std::string_view name, std::string_view text);
    /// How many records have been made.
    [[nodiscard]] virtual std::size_t recordCount() const { return 0; }
    /// Whether all that has been fed ends with a tag, directly inside the outermost element: a record that came now
    /// would be read as one.
    [[nodiscard]] bool isBetweenRecords() const;
    /// Ends the parsing: the reply is not to be believed.
    void refuse(const char *why);

private:
    struct Events;
    struct ExpatDeleter {
        void operator()(void *parser) const;
    };

    bool parseBytes(std::string_view bytes, bool last) noexcept;
    void startElement(const char *name, const char **attributes);
    void endElement(const char *name);
    void gatherText(std::string_view text);
    void endPiece();
    void noteEndOfTag();

    std::unique_ptr<void, ExpatDeleter> m_expat;
    std::string m_text; ///< since the last end of an element
    std::size_t m_pieceStart = 0; ///< where in `m_text` the piece since the last tag begins
    int m_depth = 0;
    std::uint64_t m_bytesFed = 0;
    std::uint64_t m_bytesAtLastEvent = 0;
    std::uint64_t m_endOfLastTag = 0; ///< in bytes from the beginning, of a tag directly inside the outermost element
    std::string m_root;
    std::vector<std::string> m_errorTexts;
    std::optional<TDError> m_error;
};

/// A parser that makes a list of records out of a reply.
template <typename Record> class TDListParser : public TDParser
{
public:
    /// What the reply held, in its order; nothing, and the reason in `error`, when it was not well-formed. The results
    /// are handed over, so ask once.
    [[nodiscard]] std::optional<std::vector<Record>> parseResults(TDError *error = nullptr)
    {
        if (!this->error())
            return std::move(m_results);
        if (error)
            *error = *this->error();
        return std::nullopt;
    }

protected:
    [[nodiscard]] std::size_t recordCount() const override { return m_results.size(); }

    std::vector<Record> m_results;
};

/// Collects the texts of one kind of element and, as if they were such, of every `error`: one that awaits `token` and
/// meets one `error` has one value.
class TDSimpleParser final : public TDListParser<std::string>
{
public:
    /// Without a name, only the `error` texts are collected.
    explicit TDSimpleParser(std::string tagName = {}) : m_tagName(std::move(tagName)) { }

    [[nodiscard]] const std::string &tagName() const { return m_tagName; }

private:
    void didEndElement(std::string_view name, std::string_view text) override;

    std::string m_tagName;
};

} // namespace toodledo
