// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/files.h"
#include "support/temporary_folder.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace calling {

/// A certificate for the loopback that signed itself, and its key, as files and as PEM text.
struct Certificate {
    support::TemporaryFolder place;
    std::string file = place.path() / "cert.pem";
    std::string keyFile = place.path() / "key.pem";

    Certificate()
    {
        const std::string command
            = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj /CN=localhost"
              " -addext subjectAltName=IP:127.0.0.1 -keyout "
            + keyFile + " -out " + file + " 2>/dev/null";
        if (std::system(command.c_str()) != 0)
            throw std::runtime_error("no certificate");
    }
    [[nodiscard]] std::string text() const { return support::contents(file); }
    [[nodiscard]] std::string keyText() const { return support::contents(keyFile); }
};

} // namespace calling
