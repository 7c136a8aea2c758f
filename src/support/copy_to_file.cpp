#include "support/copy_to_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "zolsdk/platform/error.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {
constexpr int32_t kDiskFull = 61;
}

std::string FileSystemPath(StringView path) {
    std::string p = ToUtf8(path);
    for (char& c : p)
        if (c == '\\') c = '/';
    return p;
}

void RaiseFileError(int errnum, StringView path) {
    String detail = String(path) + u": " + FromUtf8(std::strerror(errnum));
    switch (errnum) {
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
        RaisePlatform(err::PathNotFound, detail);
    case ETXTBSY:
    case EBUSY:
        RaisePlatform(err::PermissionDenied, detail);
    case ENOSPC:
    case EDQUOT:
        RaisePlatformFrom(kDiskFull, u"zolsdk", u"Disk full (" + detail + u")");
    default:
        RaisePlatform(err::PathFileAccess, detail);
    }
}

bool FileExists(StringView path) {
    struct stat st {};
    return ::stat(FileSystemPath(path).c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

void DeleteFile(StringView path) {
    if (::unlink(FileSystemPath(path).c_str()) != 0) RaiseFileError(errno, path);
}

bool CopyToFile(const String& psText, const String& psPath) {
    ZOL_ROUTINE(u"modGeneral:CopyToFile Ln ");
    try {
        std::string bytes;
        bytes.reserve(psText.size());
        for (char16_t c : psText) bytes.push_back(c <= 0xFF ? static_cast<char>(c) : '?');

        ZOL_LN; int fd = ::open(FileSystemPath(psPath).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
        if (fd < 0) RaiseFileError(errno, psPath);
        size_t done = 0;
        while (done < bytes.size()) {
            ZOL_LN; ssize_t n = ::pwrite(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
            if (n < 0) {
                if (errno == EINTR) continue;
                int e = errno;
                ::close(fd);
                RaiseFileError(e, psPath);
            }
            done += static_cast<size_t>(n);
        }
        ZOL_LN; if (::close(fd) != 0) RaiseFileError(errno, psPath);
        return true;
    } ZOL_RERAISE
}

} // namespace zolsdk
