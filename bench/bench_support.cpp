#include "bench_support.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace zolbench {

namespace {
std::string Value(const std::string& attributes, const std::string& key) {
    std::stringstream in(attributes);
    std::string item;
    while (std::getline(in, item, ';')) {
        auto eq = item.find('=');
        if (eq != std::string::npos && item.substr(0, eq) == key) return item.substr(eq + 1);
    }
    return {};
}

int64_t StatusKb(const char* field) {
    std::ifstream in("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(field) + ":";
    while (std::getline(in, line)) {
        if (line.rfind(prefix, 0) == 0) return std::stoll(line.substr(prefix.size()));
    }
    return -1;
}

std::string Quoted(const std::string& s) {
    std::string out = "'";
    for (char c : s) {
        if (c == '\'') out += "'\\''";
        else out += c;
    }
    return out + "'";
}
} // namespace

Server Server::FromEnvironment() {
    const char* env = std::getenv("ZOLSDK_MYSQL_ATTRS");
    return FromAttributes(env && *env ? env : "dbtype=mysql;dblocation=127.0.0.1;username=zol;password=zol");
}

Server Server::FromAttributes(const std::string& attributes) {
    Server s;
    s.attributes = attributes;
    if (auto h = Value(attributes, "dblocation"); !h.empty()) s.host = h;
    if (auto p = Value(attributes, "port"); !p.empty()) s.port = p;
    s.user = Value(attributes, "username");
    s.password = Value(attributes, "password");
    return s;
}

Ref<zolsdk::DbCatalog> Server::Catalog(const std::string& database) const {
    auto c = Ref<zolsdk::DbCatalog>::New();
    c->Init(zolsdk::FromUtf8("dbname=" + database + ";" + attributes));
    return c;
}

std::string Server::ClientOptions() const {
    return "--protocol=tcp -h" + Quoted(host) + " -P" + Quoted(port) + " -u" + Quoted(user) + " -p" + Quoted(password);
}

std::string SelfPath() {
    char buf[4096];
    ssize_t n = ::readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n <= 0) throw std::runtime_error("cannot find the program's own path");
    return std::string(buf, static_cast<size_t>(n));
}

std::string Shell(const std::string& command) {
    std::string output;
    FILE* p = ::popen((command + " 2>&1").c_str(), "r");
    if (!p) throw std::runtime_error("cannot run: " + command);
    char buf[4096];
    while (size_t n = std::fread(buf, 1, sizeof buf, p)) output.append(buf, n);
    int rc = ::pclose(p);
    if (rc != 0) throw std::runtime_error("failed (" + std::to_string(WEXITSTATUS(rc)) + "): " + command + "\n" + output);
    return output;
}

void RunSql(const Server& server, const std::string& sql, const std::string& database) {
    Shell("mariadb " + server.ClientOptions() + (database.empty() ? "" : " -D" + Quoted(database)) + " -e " +
          Quoted(sql));
}

std::string QueryValue(const Server& server, const std::string& sql, const std::string& database) {
    std::string out = Shell("mariadb " + server.ClientOptions() + (database.empty() ? "" : " -D" + Quoted(database)) +
                            " -N -B -e " + Quoted(sql));
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
    return out;
}

int64_t PeakRssKb() { return StatusKb("VmHWM"); }
int64_t CurrentRssKb() { return StatusKb("VmRSS"); }

bool ResetPeakRss() {
    std::ofstream out("/proc/self/clear_refs");
    if (!out) return false;
    out << "5";
    out.flush();
    return static_cast<bool>(out);
}

std::string Grouped(int64_t n) {
    std::string digits = std::to_string(n < 0 ? -n : n);
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
        out += digits[i];
    }
    return n < 0 ? "-" + out : out;
}

} // namespace zolbench
