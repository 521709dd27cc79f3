// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toodledo/td_list_parsers.h"
#include "toodledo/td_tasks_parser.h"
#include "toodledo/td_user_info_parser.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace toodledo {

/// What became of a reply.
struct Parsed {
    bool isWhole = false;
    std::size_t records = 0;
    std::vector<std::string> errorTexts;
    std::string root;
};

template <typename Parser> Parsed parsedBy(Parser &parser, std::string_view reply, std::size_t chunk)
{
    for (std::size_t i = 0; i < reply.size() && parser.feed(reply.substr(i, chunk)); i += chunk) { }
    Parsed result;
    result.isWhole = parser.finish();
    const auto records = parser.parseResults();
    EXPECT_EQ(records.has_value(), result.isWhole);
    result.records = records ? records->size() : 0;
    result.errorTexts = parser.errorTexts();
    result.root = parser.root();
    return result;
}

/// A parser under its name, with a true reply that uses all it knows.
struct Reader {
    const char *name;
    std::function<Parsed(std::string_view reply, std::size_t chunk)> parse;
    std::string sample;

    friend void PrintTo(const Reader &reader, std::ostream *stream) { *stream << reader.name; }
};

template <typename Parser, typename... Arguments> auto reading(Arguments... arguments)
{
    return [=](std::string_view reply, std::size_t chunk) {
        Parser parser(arguments...);
        return parsedBy(parser, reply, chunk);
    };
}

inline std::int64_t lengthAsContext(std::string_view title)
{
    return static_cast<std::int64_t>(title.size());
}

/// Nothing is known of the tasks of these contexts, so all are read, each by itself.
inline const KnownTasks *noKnownTasks()
{
    static const KnownTasks none(7);
    return &none;
}

inline const std::vector<Reader> &readers()
{
    static const std::vector<Reader> all{
        {"simple", reading<TDSimpleParser>("token"), "<?xml version=\"1.0\"?>\n<token> td\xC3\xA9 &amp; 5 </token>\n"},
        {"errors", reading<TDSimpleParser>(), "<r><error>key did not validate</error><added>5</added></r>"},
        {"folders", reading<TDFoldersParser>(),
            "<folders><folder id=\"123\" private=\"0\" archived=\"1\" order=\"2\">Shopping &lt;1&gt;</folder>"
            "<folder id='4' private='1' archived='0' order='1'></folder></folders>"},
        {"contexts", reading<TDContextsParser>(),
            "<contexts><context id=\"123\">Work</context><context id='5'><![CDATA[ A<B ]]></context></contexts>"},
        {"notes", reading<TDNotesParser>(),
            "<notes><note id=\"12\" private=\"1\" folder=\"3\" added=\"2006-01-23 10:00:00\" "
            "modified=\"2006-01-25 05:12:45\" title=\"T\" text=\"a&#10;b\">Title</note></notes>"},
        {"account", reading<TDUserInfoParser>(),
            "<account><userid>u1</userid><alias>Ana</alias><pro>1</pro><dateformat>0</dateformat><timezone>-2</"
            "timezone>"
            "<lastdelete/><lastaddedit>2026-01-02 03:04:05</lastaddedit><other>x</other></account>"},
        {"tasks", reading<TDTasksParser>(ContextLookup(&lengthAsContext)),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tasks num=\"1\" total=\"1\">\n <task>\n  <id>1234</id>\n"
            "  <parent>1122</parent> <children>3</children>\n  <title>Buy Milk &amp; \xE2\x82\xAC 5</title>\n"
            "  <tag>After work,home</tag> <folder>123</folder> <context id=\"9\">Home</context>\n"
            "  <goal id=\"8\">12 Get a Raise</goal> <added>2006-01-23</added>\n"
            "  <modified>2006-01-25 05:12:45</modified> <startdate>2006-01-24</startdate>\n"
            "  <starttime>1:00pm</starttime> <duedate modifier=\"\">2006-02-01</duedate> <duetime>2:00pm</duetime>\n"
            "  <reminder>60</reminder> <completed>2006-02-03</completed> <repeat>1</repeat>\n"
            "  <rep_advanced>Every day</rep_advanced> <status>4</status> <star>1</star> <priority>-1</priority>\n"
            "  <length>20</length> <timer onfor=\"0\">7</timer> <note>line 1\n line 2</note>\n </task>\n</tasks>"},
        {"sifted", reading<TDTasksParser>(ContextLookup(&lengthAsContext), noKnownTasks()),
            "<?xml version=\"1.0\"?>\n<tasks num=\"2\">\n <task>\n  <id>1234</id> <title>Buy Milk &amp; \xE2\x82\xAC "
            "5</title>\n"
            "  <context id=\"9\">Home</context>\n </task><task><id>5</id><note>]]</note></task>\n<!-- c --></tasks>"},
        {"deleted", reading<TDTasksParser>(ContextLookup()),
            "<deleted><task><id>1234</id><stamp>2006-01-25 05:12:45</stamp></task><task><id>5</id></task></deleted>"},
    };
    return all;
}

inline constexpr std::size_t atOnce = std::string::npos / 2;

} // namespace toodledo
