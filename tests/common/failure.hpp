#pragma once
// Catching the library's failures in a test.
#include <cstdint>
#include <utility>

#include <gtest/gtest.h>

#include "zolsdk/platform/error.hpp"

namespace zoltest {

// The DbError `f` raises; the test fails when it raises none (and the
// answer is a DbError numbered 0).
template <class F>
zolsdk::DbError Failure(F&& f) {
    try {
        std::forward<F>(f)();
    } catch (const zolsdk::DbError& e) {
        return e;
    }
    ADD_FAILURE() << "no failure was raised";
    return zolsdk::DbError(0, {}, {});
}

// The number of the DbError `f` raises, 0 when it raises none: for tables
// of calls where some must pass and some must fail.
template <class F>
int32_t FailureNumber(F&& f) {
    try {
        std::forward<F>(f)();
    } catch (const zolsdk::DbError& e) {
        return e.Number();
    }
    return 0;
}

// True when the failure chain holds the routine's literal followed by a
// line number, i.e. the failure passed through that routine.
inline bool HasTrace(const zolsdk::DbError& e, const zolsdk::String& literal) {
    const zolsdk::String& s = e.Source();
    for (size_t at = s.find(literal); at != zolsdk::String::npos; at = s.find(literal, at + 1)) {
        const size_t next = at + literal.size();
        if (next < s.size() && s[next] >= u'0' && s[next] <= u'9') return true;
    }
    return false;
}

} // namespace zoltest
