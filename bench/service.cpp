// SPDX-License-Identifier: GPL-3.0-or-later
// The service over HTTP: one client that adds task after task on one connection, against requests to a server that
// does nothing, each followed by the bare fsync of one page on the same disk; and a list of 100,000 tasks.
#include "loopback_server.h"
#include "measure.h"
#include "service/digest.h"
#include "service/http_server.h"

#include <cstdlib>
#include <curl/curl.h>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

namespace {

constexpr int adds = 2000;
constexpr int listed = 100'000;

std::string inside(const std::string &xml, const std::string &element)
{
    const std::size_t start = xml.find("<" + element + ">") + element.size() + 2;
    return xml.substr(start, xml.find("</" + element + ">") - start);
}

/// One kept-alive connection.
class Client
{
public:
    explicit Client(std::string base) : m_easy(::curl_easy_init()), m_base(std::move(base))
    {
        ::curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, &m_reply);
        ::curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, &append);
        ::curl_easy_setopt(m_easy, CURLOPT_NOSIGNAL, 1L); // as the client of this project
    }
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;
    ~Client() { ::curl_easy_cleanup(m_easy); }

    const std::string &get(const std::string &query)
    {
        m_reply.clear();
        ::curl_easy_setopt(m_easy, CURLOPT_URL, (m_base + query).c_str());
        if (::curl_easy_perform(m_easy) != CURLE_OK)
            throw std::runtime_error("no reply");
        return m_reply;
    }

private:
    static std::size_t append(const char *data, std::size_t, std::size_t size, void *reply)
    {
        static_cast<std::string *>(reply)->append(data, size);
        return size;
    }
    CURL *m_easy;
    std::string m_base;
    std::string m_reply;
};

std::string addition(const std::string &key, int number)
{
    return "addTask;key=" + key + ";title=Task%20number%20" + std::to_string(number)
        + ";tag=home%2Cwork;priority=1;duedate=2026-12-24;duetime=09%3A05%20am;note=A%20few%20words%20about%20it;";
}

/// What no service that keeps its promise can do without: a request, a reply, and a page that is safe on the disk.
void askAndSyncPages(Client &client, const std::filesystem::path &file)
{
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const std::string page(4096, 'p');
    for (int i = 0; i < adds; ++i) {
        (void)client.get(addition(std::string(32, '0'), i));
        if (::pwrite(descriptor, page.data(), page.size(), i % 1000 * 4096) < 0 || ::fdatasync(descriptor) != 0)
            throw std::runtime_error("fsync");
    }
    ::close(descriptor);
}

} // namespace

int main()
{
    std::string folder = (std::filesystem::current_path() / "bench-service-XXXXXX").string();
    if (!::mkdtemp(folder.data()))
        return EXIT_FAILURE;
    {
        auto database = service::Database::open(folder + "/data");
        service::Service service(**database);
        auto server = service::HttpServer::start(service);
        Client client("http://" + (*server)->address() + "/api.php?method=");
        const std::string userid = inside(client.get("createAccount;email=a@b.c;pass=password;"), "added");
        const std::string token = inside(client.get("getToken;userid=" + userid + ";appid=bench;"), "token");
        const std::string key = service::md5(service::md5("password") + token + userid);

        bench::printHeader("The service, one client on one connection");
        int added = 0;
        const auto addMany = [&] {
            for (int i = 0; i < adds; ++i) {
                ++added;
                if (inside(client.get(addition(key, added)), "added") != std::to_string(added))
                    throw std::runtime_error("addTask");
            }
        };
        const bench::LoopbackServer loopback("<added>1</added>");
        Client bare("http://" + loopback.host() + "/api.php?method=");
        const bench::Pair pair = bench::alternate(5, addMany, [&] { askAndSyncPages(bare, folder + "/raw"); });
        bench::printRatio(
            "addTask (raw: a bare request and an fsync)", pair.ours / adds * 1e6, pair.raw / adds * 1e6, "us", 2);
        bench::printFigure("addTask replies", adds / pair.ours, "a second", ">= 4000");
        const double direct = bench::median(5, [&] {
            for (int i = 0; i < adds; ++i)
                if (service.answer("?method=" + addition(key, ++added)).find("<added>") == std::string::npos)
                    throw std::runtime_error("addTask");
        });
        bench::printFigure("addTask without HTTP", adds / direct, "a second", "");
        const double reads = bench::median(5, [&] {
            for (int i = 0; i < adds; ++i)
                (void)client.get("getFolders;key=" + key + ";");
        });
        bench::printFigure("getFolders replies", adds / reads, "a second", "");

        (*database)->write([&](service::Connection &connection) {
            connection.execute(("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < "
                + std::to_string(listed - added)
                + ") INSERT INTO task (user, title, tag, note, added, modified, duedate) SELECT 1, 'Task number ' || i,"
                  " 'home,work', 'A few words about it & more', '2026-11-24', 1795521600 + i, '2026-12-24' FROM n")
                                   .c_str());
        });
        std::size_t size = 0;
        const double list = bench::median(5, [&] { size = service.answer("?method=getTasks;key=" + key).size(); });
        bench::printFigure("getTasks of 100,000 tasks", list, "s", "< 1");
        const double sent = bench::median(5, [&] { size = client.get("getTasks;key=" + key + ";").size(); });
        bench::printFigure("getTasks over HTTP", sent, "s", "< 1");
        bench::printFigure("its reply", static_cast<double>(size) / 1e6, "MB", "");
    }
    std::filesystem::remove_all(folder);
    return EXIT_SUCCESS;
}
