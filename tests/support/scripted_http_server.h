// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/wire.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace testing_support {

/// How the server answers one request.
struct ScriptedReply {
    enum class Mode {
        Normal,
        Hang, ///< takes the request and says nothing
        Drip, ///< one byte every 50 ms, for ever
        DripHeader, ///< the same before the body
        ResetInBody, ///< the body up to `place`, then a reset
        CutLength, ///< less of the body than its length promises, then a close
        StallInBody, ///< the same, then silence
        Shortened, ///< the body up to `place`, as if it were all
        Endless, ///< the body, then chunks of `more` without end
        BadChunk, ///< a chunk whose length is no number
        Bytes, ///< the body alone, without status or headers, then a close
        ResetAtOnce, ///< no byte, and a reset
        CloseAtOnce ///< no byte at all
    };

    std::string body = {};
    Mode mode = Mode::Normal;
    int status = 200;
    std::string headers = {}; ///< further header lines, each with its line end
    std::string more = std::string(65536, ' ');
    Tear tear = Tear::None; ///< what happens to the bytes of a normal reply or of `Bytes`, at `place`
    double place = 0.5; ///< from 0, before the first byte, to 1, after the last
};

/// How the server meets a connection.
struct Greeting {
    const TlsIdentity *identity = nullptr; ///< encrypts it; null leaves it bare
    Tear tear = Tear::None; ///< what happens to the first bytes of the encryption's greeting
    double place = 0.5;
    std::string instead = {}; ///< sent in place of all else, before a close
};

/// A tiny HTTP/1.1 server on the loopback address for tests: each request is answered as the script says, and noted.
/// The script is called on the server's threads, one call at a time, and so is what chooses the greeting of a
/// connection; without that every connection is bare.
class ScriptedHttpServer
{
public:
    /// Gets the request's target, such as "/api.php?method=getTasks;key=k;".
    using Script = std::function<ScriptedReply(const std::string &target)>;
    using Greet = std::function<Greeting()>;

    explicit ScriptedHttpServer(Script script, Greet greet = {});
    ~ScriptedHttpServer();
    ScriptedHttpServer(const ScriptedHttpServer &) = delete;
    ScriptedHttpServer &operator=(const ScriptedHttpServer &) = delete;

    /// "127.0.0.1:" and the port.
    [[nodiscard]] std::string host() const;
    [[nodiscard]] std::vector<std::string> targets() const;
    [[nodiscard]] int connections() const;

    /// A loopback address that refuses connections.
    [[nodiscard]] static std::string refusingHost();

private:
    void accept(const std::stop_token &stop);
    void serve(const std::stop_token &stop, int socket, const Greeting &greeting);
    bool answer(Wire &wire, const std::string &target);

    Script m_script;
    Greet m_greet;
    int m_listener;
    std::uint16_t m_port;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_targets;
    int m_connections = 0;
    std::vector<std::jthread> m_servants;
    std::jthread m_acceptor;
};

} // namespace testing_support
