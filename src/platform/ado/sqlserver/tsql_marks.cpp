#include "platform/ado/sqlserver/tsql_marks.hpp"

namespace zolsdk::ado::detail {

int32_t CountTSqlParameterMarks(StringView sql) {
    int32_t n = 0;
    size_t i = 0, len = sql.size();
    while (i < len) {
        char16_t c = sql[i];
        if (c == u'\'' || c == u'"' || c == u'[') {
            char16_t close = c == u'[' ? u']' : c;
            ++i;
            while (i < len) {
                if (sql[i] == close) {
                    if (i + 1 < len && sql[i + 1] == close) {
                        i += 2;
                        continue;
                    }
                    break;
                }
                ++i;
            }
            ++i;
        } else if (c == u'-' && i + 1 < len && sql[i + 1] == u'-') {
            while (i < len && sql[i] != u'\n') ++i;
        } else if (c == u'/' && i + 1 < len && sql[i + 1] == u'*') {
            int depth = 0;
            while (i < len) {
                if (sql[i] == u'/' && i + 1 < len && sql[i + 1] == u'*') {
                    ++depth;
                    i += 2;
                } else if (sql[i] == u'*' && i + 1 < len && sql[i + 1] == u'/') {
                    i += 2;
                    if (--depth == 0) break;
                } else {
                    ++i;
                }
            }
        } else {
            if (c == u'?') ++n;
            ++i;
        }
    }
    return n;
}

} // namespace zolsdk::ado::detail
