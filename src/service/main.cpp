// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/accounts.h"
#include "service/folder_lock.h"
#include "service/http_server.h"
#include "service/service.h"
#include "service/text.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <fstream>
#include <iostream>
#include <sys/stat.h>

namespace {

constexpr int failed = 1;
constexpr int misused = 2;

struct Arguments {
    std::string listenAt = "127.0.0.1:8080";
    std::string folder;
    std::string tlsCertificate;
    std::string tlsKey;
    std::string email;
    int tokensPerHour = service::ServiceOptions().tokensPerHour;
    bool isTlsOnly = false;
    bool isClosed = false;
};

int fail(const std::string &sentence)
{
    std::cerr << "quelvin-service: " << sentence << '\n';
    return failed;
}

std::optional<std::string> contentsOf(const std::string &file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    return stream && !text.empty() ? std::optional(text) : std::nullopt;
}

/// The first line of standard input; "\n" alone ends it, since a password may hold anything else.
std::string readPassword()
{
    std::string password;
    std::getline(std::cin, password);
    return password;
}

using AccountChange = service::Result<void> (*)(service::Database &, std::string_view, std::string_view);

/// Does to the account of the given e-mail address what needs a password.
int changeAccount(const Arguments &arguments, AccountChange change)
{
    const std::string password = readPassword();
    if (service::cleaned(password) != password)
        return fail("The password holds characters that clients cannot send.");
    auto database = service::Database::open(arguments.folder);
    if (!database)
        return fail(database.error());
    if (auto done = change(**database, arguments.email, password); !done)
        return fail(done.error());
    return 0;
}

int serve(const Arguments &arguments, const sigset_t &endings)
{
    service::HttpOptions http{.listenAt = arguments.listenAt, .isTlsOnly = arguments.isTlsOnly};
    for (const auto &[file, text] :
        {std::pair{&arguments.tlsCertificate, &http.tlsCertificate}, std::pair{&arguments.tlsKey, &http.tlsKey}}) {
        const auto contents = file->empty() ? std::string() : contentsOf(*file);
        if (!contents)
            return fail("The file \"" + *file + "\" cannot be read.");
        *text = *contents;
    }
    auto database = service::Database::open(arguments.folder);
    if (!database)
        return fail(database.error());
    const auto lock = service::FolderLock::take(arguments.folder);
    if (!lock)
        return fail(lock.error());
    service::Service service(**database,
        {.tokensPerHour = arguments.tokensPerHour,
            .isSecure = !http.tlsCertificate.empty(),
            .allowsSignUp = !arguments.isClosed});
    auto server = service::HttpServer::start(service, std::move(http));
    if (!server)
        return fail(server.error());
    std::cout << "listening on " << (*server)->address() << std::endl;
    int signal = 0;
    ::sigwait(&endings, &signal);
    return 0;
}

} // namespace

int main(int count, char **texts)
{
    Arguments arguments;
    CLI::App application("The service that task stores synchronise with.", "quelvin-service");
    application.set_version_flag("--version", "quelvin-service " QUELVIN_VERSION);
    application.add_option("--data", arguments.folder, "The folder that holds accounts and tasks")
        ->required()
        ->type_name("DIR");
    application.add_option("--listen", arguments.listenAt, "Where to listen; port 0 takes a free port")
        ->type_name("HOST:PORT")
        ->capture_default_str();
    application.add_option("--tokens-per-hour", arguments.tokensPerHour, "How many tokens an account may take")
        ->check(CLI::Range(1, 1'000'000))
        ->type_name("N")
        ->capture_default_str();
    auto *certificate
        = application.add_option("--tls-cert", arguments.tlsCertificate, "Certificate with its chain, PEM");
    auto *key = application.add_option("--tls-key", arguments.tlsKey, "The certificate's key, PEM");
    certificate->type_name("FILE")->needs(key);
    key->type_name("FILE")->needs(certificate);
    application.add_flag("--tls-only", arguments.isTlsOnly, "Cut connections that speak plain http")->needs(key);
    application.add_flag("--no-sign-up", arguments.isClosed, "Let nobody but add-user create accounts");
    auto *addition = application.add_subcommand("add-user", "Create an account; the password comes on standard input");
    auto *renewal = application.add_subcommand("set-password", "Give an account another password, likewise");
    for (CLI::App *command : {addition, renewal}) {
        command->fallthrough(); // so that --data may follow as well
        command->add_option("email", arguments.email, "The account's e-mail address")->required()->type_name("EMAIL");
    }
    application.require_subcommand(0, 1);
    try {
        application.parse(count, texts);
    } catch (const CLI::Success &answered) {
        return application.exit(answered);
    } catch (const CLI::ParseError &error) {
        std::cerr << "quelvin-service: " << error.what() << "\nTry quelvin-service --help.\n";
        return misused;
    }

    ::umask(0077);
    std::signal(SIGPIPE, SIG_IGN); // a client that goes away is no reason to end,
    std::signal(SIGXFSZ, SIG_IGN); // and a file that may not grow is an error for the one who wrote
    sigset_t endings;
    sigemptyset(&endings);
    sigaddset(&endings, SIGTERM);
    sigaddset(&endings, SIGINT);
    ::pthread_sigmask(SIG_BLOCK, &endings, nullptr); // before the first thread, so that only the wait sees them
    if (addition->parsed())
        return changeAccount(arguments, service::addAccount);
    if (renewal->parsed())
        return changeAccount(arguments, service::setPassword);
    return serve(arguments, endings);
}
