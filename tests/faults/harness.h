// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace faults {

/// A program that tries numbered cases; all of them share one command line, so that one table and one script run all.
///
///     harness [--count N] [--first K] [--seed S]   N cases from case K on (0: all that there are)
///     harness --seed S --case K                    one case, to look at a failure again
///     harness --control NAME                       with a bug planted: fails when the cases do not find it
///
/// A case depends on nothing but the seed and its number.
struct Harness {
    std::string name;
    /// How many cases there are for a seed; 0 where they never end. Called once, after bugs were planted.
    std::function<std::int64_t(std::uint64_t seed)> prepare;
    /// What was wrong in the case; nothing when all was well.
    std::function<std::optional<std::string>(std::int64_t number)> run;
    /// Words on what was seen in all cases, for the summary; throws when the harness cannot have tested anything.
    std::function<std::string()> seen;
    /// How many cases run at a time, each on a thread of its own; more than one suits cases that mostly wait.
    int lanes = 1;
};

/// The main function of a harness.
[[nodiscard]] int runHarness(int argc, char **argv, const Harness &harness);

/// The main function of a harness whose cases follow each other on one `Subject`, which has their `run` and `seen`.
template <class Subject> [[nodiscard]] int runOnEnd(int argc, char **argv, std::string name)
{
    std::unique_ptr<Subject> subject;
    return runHarness(argc, argv,
        {.name = std::move(name),
            .prepare =
                [&subject](std::uint64_t) {
                    subject = std::make_unique<Subject>();
                    return std::int64_t{0};
                },
            .run = [&subject](std::int64_t number) { return subject->run(number); },
            .seen = [&subject] { return subject->seen(); }});
}

} // namespace faults
