#pragma once
// The failure record. Every failure the library lets out is a DbError; its
// Source carries the chain of routines the failure passed, one line each.
#include <cstdint>
#include <exception>
#include <string>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class ZOLSDK_API DbError : public std::exception {
public:
    DbError(int32_t number, String source, String description);

    int32_t Number() const { return number_; }
    const String& Source() const { return source_; }
    const String& Description() const { return description_; }

    void Source(String s) { source_ = std::move(s); }
    void Description(String d);

    // Source + " => " + CR LF + literal + line: one link of the chain.
    void AppendTrace(StringView literal, int line);

    const char* what() const noexcept override { return what_.c_str(); }

private:
    int32_t number_;
    String source_;
    String description_;
    std::string what_;
    void Refresh();
};

// Failure numbers of the platform (the tagged-value run time, collections,
// rowsets). Library numbers are string-table ids + 0x80040000.
namespace err {
constexpr int32_t InvalidCall = 5;
constexpr int32_t Overflow = 6;
constexpr int32_t OutOfMemory = 7;
constexpr int32_t SubscriptOutOfRange = 9;
constexpr int32_t DivisionByZero = 11;
constexpr int32_t TypeMismatch = 13;
constexpr int32_t FileNotFound = 53;
constexpr int32_t FileAlreadyExists = 58;
constexpr int32_t PermissionDenied = 70;
constexpr int32_t PathFileAccess = 75;
constexpr int32_t PathNotFound = 76;
constexpr int32_t ObjectNotSet = 91;
constexpr int32_t InvalidUseOfNull = 94;
constexpr int32_t DuplicateKey = 457;
constexpr int32_t Internal = 51;
// Rowset failures, with the numbers the platform's data objects report.
constexpr int32_t AdoArguments = 3001;
constexpr int32_t AdoNoCurrentRecord = 3021;
constexpr int32_t AdoItemNotFound = 3265;
constexpr int32_t AdoNotAllowedClosed = 3704;
constexpr int32_t AdoNotAllowedOpen = 3705;
constexpr int32_t AdoMultipleStep = static_cast<int32_t>(0x80040E21);
constexpr int32_t AdoFilterInvalid = 3001;
} // namespace err

// Raise a platform failure: Source is the platform's ("zolsdk" run time),
// Description its standard text unless one is given.
[[noreturn]] ZOLSDK_API void RaisePlatform(int32_t number, StringView detail = {});

// Turns whatever is being handled (DbError, std::bad_alloc, any other
// exception) into a DbError: the single conversion point of foreign failures.
// For a handler that must not let anything but a DbError out (a callback, a
// binding to another language).
ZOLSDK_API DbError CurrentFailure();

} // namespace zolsdk
