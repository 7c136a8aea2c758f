#pragma once
// Runs the zol binary as a user would, capturing what it prints and how it
// ends, and the mariadb client for set-up and independent checks.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace zoltool {

struct Ran {
    int exit = -1; // the exit code; 128 + signal when killed
    std::string out, err;
    bool timedOut = false;
};

// Runs `argv` (argv[0] is the program), with `input` on its stdin, for at most `limit`.
inline Ran RunProgram(const std::vector<std::string>& argv, std::chrono::seconds limit = std::chrono::seconds(300),
                      const std::string& input = {}) {
    int outPipe[2], errPipe[2], inPipe[2];
    if (::pipe(outPipe) || ::pipe(errPipe) || ::pipe(inPipe)) return {};
    pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(inPipe[0], 0);
        ::dup2(outPipe[1], 1);
        ::dup2(errPipe[1], 2);
        for (int fd : {outPipe[0], outPipe[1], errPipe[0], errPipe[1], inPipe[0], inPipe[1]}) ::close(fd);
        std::vector<char*> args;
        for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        ::execvp(args[0], args.data());
        ::_exit(127);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    ::close(inPipe[0]);
    if (!input.empty()) (void)!::write(inPipe[1], input.data(), input.size());
    ::close(inPipe[1]);

    Ran r;
    auto deadline = std::chrono::steady_clock::now() + limit;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string* into[2] = {&r.out, &r.err};
    int open = 2;
    while (open > 0) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            r.timedOut = true;
            ::kill(pid, SIGKILL);
            break;
        }
        if (::poll(fds, 2, static_cast<int>(left.count())) < 0) break;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP))) continue;
            char buf[65536];
            ssize_t n = ::read(fds[i].fd, buf, sizeof buf);
            if (n > 0) {
                into[i]->append(buf, static_cast<size_t>(n));
            } else {
                ::close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    for (auto& f : fds)
        if (f.fd >= 0) ::close(f.fd);
    int status = 0;
    ::waitpid(pid, &status, 0);
    r.exit = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return r;
}

inline Ran Zol(std::vector<std::string> args, std::chrono::seconds limit = std::chrono::seconds(300)) {
    args.insert(args.begin(), ZOL_BINARY);
    return RunProgram(args, limit);
}

// The local MariaDB the tests use (the shared server unless a test starts its own).
struct Server {
    std::string host = "127.0.0.1";
    int port = 3306;
    std::string user = "zol", password = "zol";

    std::string Attrs(const std::string& db) const {
        return "dbtype=mysql;dbname=" + db + ";dblocation=" + host + ";port=" + std::to_string(port) +
               ";username=" + user + ";password=" + password;
    }
    // The mariadb client: `sql` on `db`, tab-separated rows without headers.
    Ran Sql(const std::string& sql, const std::string& db = "") const {
        std::vector<std::string> argv = {"mariadb", "--protocol=tcp", "-h" + host, "-P" + std::to_string(port),
                                         "-u" + user, "-p" + password, "-N", "-B"};
        if (!db.empty()) argv.push_back(db);
        return RunProgram(argv, std::chrono::seconds(600), sql);
    }
};

} // namespace zoltool
