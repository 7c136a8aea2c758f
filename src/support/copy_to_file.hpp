#pragma once
// Writing a text to a file, and the few other file operations the file
// engines need. Paths are written with back-slashes as separators
// throughout the library; here, at the file layer, they become "/".
// File-system failures carry the platform's file numbers (53 file not
// found, 61 disk full, 70 permission denied, 75 path/file access,
// 76 path not found) with the path and the system's reason as text.
#include <string>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

// Opens the path for binary writing (creating the file when it is absent),
// writes the text at the very start, one byte a character, and returns true.
// An existing file is not cut short: bytes behind the text stay. Characters
// above U+00FF have no byte of their own and are written as "?".
bool CopyToFile(const String& psText, const String& psPath);

// The path as the file system takes it.
std::string FileSystemPath(StringView path);

// True when a file (not a folder) is at the path.
bool FileExists(StringView path);

// Deletes the file at the path.
void DeleteFile(StringView path);

// Raises the platform's failure for a file-system error number.
[[noreturn]] void RaiseFileError(int errnum, StringView path);

} // namespace zolsdk
