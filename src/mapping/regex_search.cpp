#define PCRE2_CODE_UNIT_WIDTH 16
#include "mapping/regex_search.hpp"

#include <pcre2.h>

#include "zolsdk/platform/error.hpp"

namespace zolsdk {

struct RegexSearch::Engine {
    pcre2_code* code = nullptr;
    pcre2_match_data* match = nullptr;
    ~Engine() {
        if (match) pcre2_match_data_free(match);
        if (code) pcre2_code_free(code);
    }
};

namespace {
String EngineMessage(int code) {
    PCRE2_UCHAR buffer[256];
    const int n = pcre2_get_error_message(code, buffer, sizeof buffer / sizeof buffer[0]);
    if (n < 0) return u"error " + IntText(code);
    return String(reinterpret_cast<const char16_t*>(buffer), static_cast<size_t>(n));
}

PCRE2_SPTR Units(StringView text) {
    // An empty view may carry no storage at all; the engine wants a pointer.
    static const char16_t none[1] = {0};
    return reinterpret_cast<PCRE2_SPTR>(text.empty() ? none : text.data());
}
} // namespace

RegexSearch::RegexSearch() : engine_(new Engine) {}
RegexSearch::~RegexSearch() { delete engine_; }

void RegexSearch::Compile(StringView pattern, uint32_t flags) {
    int code = 0;
    PCRE2_SIZE offset = 0;
    pcre2_code* compiled = pcre2_compile(Units(pattern), pattern.size(), flags, &code, &offset, nullptr);
    if (!compiled)
        RaisePlatform(err::InvalidCall, u"regular expression: " + EngineMessage(code) + u" at offset " +
                                            IntText(static_cast<int64_t>(offset)));
    if (engine_->code) pcre2_code_free(engine_->code);
    if (engine_->match) pcre2_match_data_free(engine_->match);
    engine_->code = compiled;
    engine_->match = pcre2_match_data_create_from_pattern(compiled, nullptr);
    if (!engine_->match) RaisePlatform(err::OutOfMemory);
    matched_ = false;
    start_ = end_ = 0;
}

bool RegexSearch::Match(StringView subject) {
    if (!engine_->code) RaisePlatform(err::InvalidCall, u"regular expression: nothing compiled");
    matched_ = false;
    start_ = end_ = 0;
    const int rc = pcre2_match(engine_->code, Units(subject), subject.size(), 0, 0, engine_->match, nullptr);
    if (rc == PCRE2_ERROR_NOMATCH) return false;
    if (rc < 0) RaisePlatform(err::InvalidCall, u"regular expression: " + EngineMessage(rc));
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(engine_->match);
    matched_ = true;
    start_ = static_cast<int32_t>(ovector[0]) + 1;
    end_ = static_cast<int32_t>(ovector[1]) + 1;
    return true;
}

} // namespace zolsdk
