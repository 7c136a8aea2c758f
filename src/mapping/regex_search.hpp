#pragma once
// The pattern search behind the oRegx operator: compile once, search a
// subject for the first match, read where it lies. Positions are 1-based
// character positions of the UTF-16 subject, and the end is the position
// just behind the match, so the match is ResultEnd() - ResultStart()
// characters long.
#include <cstdint>

#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class RegexSearch {
public:
    RegexSearch();
    ~RegexSearch();
    RegexSearch(const RegexSearch&) = delete;
    RegexSearch& operator=(const RegexSearch&) = delete;

    // A malformed pattern fails with 5 and the engine's own account of it.
    void Compile(StringView pattern, uint32_t flags);
    // Searches from the start of the subject; false when nothing matches.
    // Fails with 5 before Compile or when the engine gives up.
    bool Match(StringView subject);
    bool IsMatched() const { return matched_; }
    int32_t ResultStart() const { return start_; }
    int32_t ResultEnd() const { return end_; }

private:
    struct Engine;
    Engine* engine_;
    bool matched_ = false;
    int32_t start_ = 0;
    int32_t end_ = 0;
};

} // namespace zolsdk
