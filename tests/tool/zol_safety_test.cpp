// zol as a user meets it with unlucky input: a server that accepts the
// connection and never answers, and XML schema files that are missing or
// broken. The tool runs as a separate process.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "common/temp_dir.hpp"

namespace {

// The zol next to this test program's folder: build/tools/zol.
std::string ZolPath() {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "tools" / "zol").string();
}

struct Outcome {
    int exitCode = -1;
    std::string output;
    double seconds = 0;
};

Outcome RunZol(const std::string& arguments) {
    const auto start = std::chrono::steady_clock::now();
    Outcome o;
    // A hang is cut at 60 s (exit 124) so that it fails instead of waiting.
    FILE* p = ::popen(("timeout -s KILL 60 " + ZolPath() + " " + arguments + " 2>&1").c_str(), "r");
    if (!p) return o;
    std::array<char, 4096> buf{};
    while (size_t n = std::fread(buf.data(), 1, buf.size(), p)) o.output.append(buf.data(), n);
    const int status = ::pclose(p);
    o.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    o.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return o;
}

// Accepts every connection on a port of its own and never sends a byte.
class SilentServer {
public:
    SilentServer() {
        fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        if (::bind(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || ::listen(fd_, 16) != 0 ||
            ::getsockname(fd_, reinterpret_cast<sockaddr*>(&a), &len) != 0)
            ADD_FAILURE() << "no port for the silent server";
        port_ = ntohs(a.sin_port);
        thread_ = std::thread([this] {
            while (!stop_) {
                const int c = ::accept(fd_, nullptr, nullptr);
                if (c >= 0) held_.push_back(c); // kept open, never answered
            }
        });
    }
    ~SilentServer() {
        stop_ = true;
        ::shutdown(fd_, SHUT_RDWR);
        ::close(fd_);
        thread_.join();
        for (int c : held_) ::close(c);
    }
    int Port() const { return port_; }

private:
    int fd_ = -1;
    int port_ = 0;
    std::atomic<bool> stop_{false};
    std::vector<int> held_;
    std::thread thread_;
};

// `zol schema` on an attribute string whose server accepts and never answers
// fails, naming the server, within 20 s (the login timeout is 15 s).
void ExpectBoundedFailure(const std::string& engineAttrs) {
    SilentServer server;
    const std::string attrs = engineAttrs + ";dbname=x;dblocation=127.0.0.1;port=" + std::to_string(server.Port()) +
                              ";username=u;password=p";
    const Outcome o = RunZol("schema \"" + attrs + "\"");
    EXPECT_NE(o.exitCode, 0) << attrs << "\n" << o.output;
    EXPECT_LT(o.seconds, 20.0) << attrs << "\n" << o.output;
    EXPECT_NE(o.output.find("127.0.0.1"), std::string::npos) << o.output;
}

TEST(ZolAgainstASilentServer, SqlServerTextFailsWithinTwentySeconds) { ExpectBoundedFailure("dbtype=mssql;protocol=1"); }

// Bounded by the MariaDB client backend's connect and handshake timeouts.
TEST(ZolAgainstASilentServer, MySqlTextFailsWithinTwentySeconds) { ExpectBoundedFailure("dbtype=mysql"); }

TEST(ZolSchemaOfAnXmlFile, SaysWhenTheFileIsMissingOrBroken) {
    zoltest::TempDir dir;
    const std::string location = zolsdk::ToUtf8(dir.Location());
    auto attrs = [&](const std::string& name) { return "\"dbtype=msxml;dbname=" + name + ";dblocation=" + location + "\""; };
    ASSERT_EQ(RunZol("create " + attrs("good.xml")).exitCode, 0);
    const Outcome good = RunZol("schema " + attrs("good.xml"));
    EXPECT_EQ(good.exitCode, 0) << good.output;
    EXPECT_NE(good.output.find(": 0 tables"), std::string::npos) << good.output;

    std::string whole;
    {
        std::ifstream in(dir.File("good.xml"));
        whole.assign(std::istreambuf_iterator<char>(in), {});
    }
    ASSERT_GT(whole.size(), 20u);
    std::ofstream(dir.File("cut.xml")) << whole.substr(0, whole.size() / 2);
    std::ofstream(dir.File("other.xml")) << "<?xml version=\"1.0\"?><inventory><item/></inventory>";
    std::ofstream(dir.File("noise.xml")) << "this is no XML at all";
    std::filesystem::create_directory(dir.File("folder.xml"));

    const std::vector<std::pair<std::string, std::string>> cases = {
        {"absent.xml", "is missing"}, {"cut.xml", "is broken"}, {"noise.xml", "is broken"},
        {"other.xml", "holds no schema"}, {"folder.xml", "is a folder"}};
    for (const auto& [file, words] : cases) {
        const Outcome o = RunZol("schema " + attrs(file));
        EXPECT_NE(o.exitCode, 0) << file << "\n" << o.output;
        EXPECT_NE(o.output.find(words), std::string::npos) << file << "\n" << o.output;
        EXPECT_EQ(o.output.find("0 tables"), std::string::npos) << file << "\n" << o.output;
    }
    // A name that would leave the folder is refused before any file is touched.
    const Outcome escape = RunZol("schema " + attrs("../good.xml"));
    EXPECT_NE(escape.exitCode, 0) << escape.output;
    EXPECT_NE(escape.output.find("inside dblocation"), std::string::npos) << escape.output;
}

} // namespace
