#pragma once
// Shared pieces of the XML engine tests: a private temporary folder, whole
// file reads and writes, and the failure chain taken apart.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

#include "zolsdk/platform/error.hpp"

namespace zolsdk::xmltest {

class TempDir {
public:
    TempDir() {
        static std::atomic<int> seq{0};
        auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
        path_ = std::filesystem::temp_directory_path() /
                ("zolsdk_xml_" + std::to_string(::getpid()) + "_" + std::to_string(stamp) + "_" + std::to_string(seq++));
        std::filesystem::create_directories(path_);
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::string File(const std::string& name) const { return (path_ / name).string(); }
    String Location() const { return FromUtf8(path_.string()); }

private:
    std::filesystem::path path_;
};

inline void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The failure `f` raises; a test failure (and a blank record) when it
// raises none.
inline DbError FailureOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const DbError& e) {
        return e;
    }
    ADD_FAILURE() << "the call did not fail";
    return DbError(0, u"", u"");
}

// Source split at its " => " CR LF joints, with the line number taken off
// each trace line. A trace line without a number keeps a "<no line>" mark,
// so that comparing chains catches it.
inline std::vector<String> Chain(const String& source) {
    const String joint = u" => \r\n";
    std::vector<String> parts;
    size_t start = 0;
    for (;;) {
        size_t hit = source.find(joint, start);
        parts.push_back(source.substr(start, hit == String::npos ? String::npos : hit - start));
        if (hit == String::npos) break;
        start = hit + joint.size();
    }
    for (size_t i = 1; i < parts.size(); ++i) {
        String& p = parts[i];
        size_t digits = p.size();
        while (digits > 0 && p[digits - 1] >= u'0' && p[digits - 1] <= u'9') --digits;
        if (digits == p.size()) p += u"<no line>";
        else p.resize(digits);
    }
    return parts;
}

} // namespace zolsdk::xmltest
