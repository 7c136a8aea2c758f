#pragma once
// Shared pieces of the XML engine tests: a private temporary folder, whole
// file reads and writes, and the failure chain taken apart.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <vector>

#include "common/failure.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::xmltest {

using Texts = std::vector<String>;

struct TempDir {
    std::filesystem::path path = std::filesystem::temp_directory_path() /
                                 ("zolsdk_xml_" + std::to_string(::getpid()) + "_" + std::to_string(Next()));
    TempDir() { std::filesystem::create_directories(path); }
    ~TempDir() { std::error_code ec; std::filesystem::remove_all(path, ec); }
    std::string File(const std::string& name) const { return (path / name).string(); }
    String Location() const { return FromUtf8(path.string()); }
    static int Next() { static std::atomic<int> n{0}; return n++; }
};

inline void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

using zoltest::Failure;

// Source split at its " => " CR LF joints, each trace line without its
// number; a trace line with no number is marked so that comparisons fail.
inline Texts Chain(const String& source) {
    Texts parts;
    for (size_t start = 0, hit = 0; hit != String::npos; start = hit + 6) {
        hit = source.find(u" => \r\n", start);
        parts.push_back(source.substr(start, hit == String::npos ? String::npos : hit - start));
    }
    for (size_t i = 1; i < parts.size(); ++i) {
        size_t n = parts[i].find_last_not_of(u"0123456789") + 1;
        parts[i] = n == parts[i].size() ? parts[i] + u"<no line>" : parts[i].substr(0, n);
    }
    return parts;
}

} // namespace zolsdk::xmltest
