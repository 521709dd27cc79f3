// SPDX-License-Identifier: GPL-3.0-or-later
// Lets every operation of the client meet every fault of a server that speaks TLS; the seed chooses the version of TLS
// and the places at which handshakes, records, headers and bodies are cut.
#include "faults/harness.h"
#include "faults/sabotage.h"
#include "network/grid.h"
#include "support/temporary_folder.h"

#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>

using namespace network;

namespace {

/// A transport with a bug: it takes a reply that broke off for a whole one, and makes up what is missing.
class ForgivingTransport final : public toodledo::HttpTransport
{
public:
    explicit ForgivingTransport(toodledo::HttpTransport &careful) : m_careful(careful) { }

    foundation::Result<toodledo::HttpReply> perform(
        const toodledo::HttpRequest &request, toodledo::BodySink &body) override
    {
        Counter counter(body);
        auto reply = m_careful.perform(request, counter);
        if (reply || counter.bytes == 0)
            return reply;
        const std::string missing
            = goodReply(request.url).substr(std::min(counter.bytes, goodReply(request.url).size()));
        const bool isTruncation
            = missing.empty() && reply.error().detail.find("ended before the reply did") != std::string::npos;
        if (!(faults::isPlanted("cut-reply-believed") && !missing.empty())
            && !(faults::isPlanted("truncation-believed") && isTruncation))
            return reply;
        body.receive(missing);
        return toodledo::HttpReply{200, "text/xml"};
    }

private:
    struct Counter final : toodledo::BodySink {
        explicit Counter(toodledo::BodySink &sink) : to(sink) { }
        bool receive(std::string_view text) override
        {
            bytes += text.size();
            return to.receive(text);
        }
        toodledo::BodySink &to;
        std::size_t bytes = 0;
    };
    toodledo::HttpTransport &m_careful;
};

class Grid
{
public:
    explicit Grid(std::uint64_t seed) : m_seed(seed)
    {
        for (const auto &table : {network::faults(), tlsFaults()})
            for (const Fault &fault : table)
                m_faults.push_back(&fault);
        std::ofstream(m_authorities) << identities().authorities();
    }

    [[nodiscard]] std::int64_t size() const { return static_cast<std::int64_t>(m_faults.size() * operations().size()); }

    std::optional<std::string> run(std::int64_t number)
    {
        std::seed_seq numbers{m_seed, static_cast<std::uint64_t>(number)};
        std::mt19937 random(numbers);
        const auto index = static_cast<std::size_t>(number);
        const double place = std::uniform_real_distribution<double>(0, 1)(random);
        const auto &identity = random() % 2 == 0 ? identities().good : identities().goodForTls12;
        const Cell cell{operations()[index / m_faults.size()], *m_faults[index % m_faults.size()], place, &identity};
        HurriedTransport careful(
            {.acceptedCertificateDomain = faults::isPlanted("any-certificate-accepted") ? "127.0.0.1" : "",
                .authorities = m_authorities});
        ForgivingTransport forgiving(careful);
        const auto wrong = tryCell(cell, forgiving, [&](bool hurried) { careful.beInAHurry(hurried); });
        if (wrong)
            return std::string(cell.fault.name) + ": " + cell.operation.name + " " + *wrong;
        if (std::string leak = m_log.leak(); !leak.empty())
            return "a line of the log shows a secret: " + leak;
        return {};
    }

    [[nodiscard]] std::string seen() const
    {
        if (m_log.lines() == 0)
            throw std::runtime_error("no operation complained of anything");
        return std::to_string(m_faults.size()) + " faults, " + std::to_string(operations().size()) + " operations, "
            + std::to_string(m_log.lines()) + " lines of log";
    }

private:
    std::uint64_t m_seed;
    support::TemporaryFolder m_folder;
    std::string m_authorities = m_folder.path() / "authorities.pem";
    std::vector<const Fault *> m_faults;
    LogReader m_log;
};

} // namespace

int main(int argc, char **argv)
{
    std::unique_ptr<Grid> grid;
    return faults::runHarness(argc, argv,
        {.name = "harness_network",
            .prepare =
                [&grid](std::uint64_t seed) {
                    grid = std::make_unique<Grid>(seed);
                    return grid->size();
                },
            .run = [&grid](std::int64_t number) { return grid->run(number); },
            .seen = [&grid] { return grid->seen(); },
            .lanes = 16});
}
