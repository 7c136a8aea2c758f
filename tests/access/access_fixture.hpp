#pragma once
// What the Access tests share: copies of the real sample files in a folder
// of the test's own (the originals stay untouched), attribute strings and
// sessions for them, and failure capture.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

#include "common/failure.hpp"
#include "common/temp_dir.hpp"
#include "sessions/access_session.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zolsdk::accesstest {

using zoltest::Failure;

inline const std::string kSamples = std::string(ZOLSDK_SHARED_DIR) + "/data/access/";

// A temporary folder holding writable copies of sample files.
class Workspace {
public:
    // Copies the sample into the folder and gives its attribute string.
    String Sample(const std::string& file) const {
        std::filesystem::copy_file(kSamples + file, dir_.File(file), std::filesystem::copy_options::overwrite_existing);
        std::filesystem::permissions(dir_.File(file), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        return Attrs(file);
    }
    String Attrs(const std::string& file) const {
        return u"dbtype=msaccess;dbname=" + FromUtf8(file) + u";dblocation=" + dir_.Location();
    }
    std::filesystem::path File(const std::string& file) const { return dir_.File(file); }
    const zoltest::TempDir& Dir() const { return dir_; }

private:
    zoltest::TempDir dir_;
};

inline Ref<DbCatalog> Catalog(const String& attrs) {
    auto c = Ref<DbCatalog>::New();
    c->Init(attrs);
    return c;
}

inline Ref<DbMsAccessDB> Session(const String& attrs) {
    auto s = Ref<DbMsAccessDB>::New();
    s->Connect(attrs);
    return s;
}

inline bool Contains(const String& text, StringView part) { return text.find(part) != String::npos; }

} // namespace zolsdk::accesstest
