#pragma once
// A MariaDB server of a test's own: its own data folder and port, so the
// test may kill it and start it again without touching the shared server.
#include <netinet/in.h>
#include <sys/socket.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "tool_runner.hpp"

namespace zoltool {

class OwnServer {
public:
    // `options` go to the server as they are ("--local-infile=0").
    explicit OwnServer(std::vector<std::string> options = {}) : options_(std::move(options)) {
        dir_ = std::filesystem::temp_directory_path() / ("zol-own-server-" + std::to_string(::getpid()));
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        server.port = FreePort();
        Ran made = RunProgram({"mariadb-install-db", "--no-defaults", "--datadir=" + (dir_ / "data").string(),
                               "--user=" + User(), "--auth-root-authentication-method=normal", "--skip-test-db"},
                              std::chrono::seconds(180));
        if (made.exit != 0) throw std::runtime_error("mariadb-install-db failed: " + made.out + made.err);
        Start();
        Ran login = RunProgram({"mariadb", "--no-defaults", "-S", Socket(), "-uroot"}, std::chrono::seconds(60),
                               "CREATE USER 'zol'@'%' IDENTIFIED BY 'zol'; GRANT ALL ON *.* TO 'zol'@'%';"
                               "CREATE USER 'zol'@'localhost' IDENTIFIED BY 'zol'; GRANT ALL ON *.* TO 'zol'@'localhost';");
        if (login.exit != 0) throw std::runtime_error("cannot make the test login: " + login.err);
    }
    ~OwnServer() {
        Kill();
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }

    void Start() {
        pid_ = ::fork();
        if (pid_ == 0) {
            int log = ::open((dir_ / "server.log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
            ::dup2(log, 1);
            ::dup2(log, 2);
            std::string data = "--datadir=" + (dir_ / "data").string(), port = "--port=" + std::to_string(server.port),
                        socket = "--socket=" + Socket(), user = "--user=" + User();
            std::vector<std::string> args = {"mariadbd", "--no-defaults", data, port, "--bind-address=127.0.0.1",
                                             socket, user, "--skip-log-bin", "--innodb-buffer-pool-size=64M"};
            args.insert(args.end(), options_.begin(), options_.end());
            std::vector<char*> argv;
            for (auto& a : args) argv.push_back(a.data());
            argv.push_back(nullptr);
            ::execvp("mariadbd", argv.data());
            ::_exit(127);
        }
        for (int i = 0; i < 300; ++i) {
            if (RunProgram({"mariadb", "--no-defaults", "-S", Socket(), "-uroot", "-e", "SELECT 1"},
                           std::chrono::seconds(10))
                    .exit == 0)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
        throw std::runtime_error("the test's own server did not start");
    }

    // Ends the server at once, as a crash or a pulled cable would.
    void Kill() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

    Server server;

private:
    std::string Socket() const { return (dir_ / "sock").string(); }
    static std::string User() { return ::getuid() == 0 ? "root" : std::string(::getenv("USER") ? ::getenv("USER") : ""); }
    static int FreePort() {
        int s = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t len = sizeof a;
        ::bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a);
        ::getsockname(s, reinterpret_cast<sockaddr*>(&a), &len);
        int port = ntohs(a.sin_port);
        ::close(s);
        return port;
    }

    std::filesystem::path dir_;
    std::vector<std::string> options_;
    pid_t pid_ = -1;
};

} // namespace zoltool
