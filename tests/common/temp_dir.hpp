#pragma once
// A folder of its own for one test, removed afterwards.
#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "zolsdk/platform/text.hpp"

namespace zoltest {

class TempDir {
public:
    TempDir() {
        static std::atomic<int> n{0};
        path_ = std::filesystem::temp_directory_path() /
                ("zolsdk-test-" + std::to_string(::getpid()) + "-" + std::to_string(n++));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    const std::filesystem::path& Path() const { return path_; }
    zolsdk::String Location() const { return zolsdk::FromUtf8(path_.string()); }
    std::filesystem::path File(const std::string& name) const { return path_ / name; }
    void Write(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
    }
    std::string Read(const std::string& name) const {
        std::ifstream in(path_ / name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    // The attribute string of an XML catalog in this folder.
    zolsdk::String XmlAttrs(const std::string& file) const {
        return u"dbtype=msxml;dbname=" + zolsdk::FromUtf8(file) + u";dblocation=" + Location();
    }

private:
    std::filesystem::path path_;
};

} // namespace zoltest
