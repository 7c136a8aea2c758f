#include "platform/ado/mariadb/login.hpp"

#include <charconv>

namespace zolsdk::ado::detail {

namespace {

StringView Strip(StringView v) {
    while (!v.empty() && v.front() == u' ') v.remove_prefix(1);
    while (!v.empty() && v.back() == u' ') v.remove_suffix(1);
    if (v.size() >= 2 && v.front() == u'{' && v.back() == u'}') v = v.substr(1, v.size() - 2);
    return v;
}

template <class T>
T Number(const std::string& text, T fallback) {
    T v = fallback;
    auto r = std::from_chars(text.data(), text.data() + text.size(), v);
    return r.ec == std::errc() ? v : fallback;
}

} // namespace

bool MariaDbLogin::OnThisHost() const {
    return host.empty() || host == "localhost" || host == "::1" || host == "[::1]" || host.rfind("127.", 0) == 0;
}

bool MariaDbLogin::Compress() const { return (option & mysqlOption::Compressed) && !OnThisHost(); }

MariaDbLogin ReadMariaDbLogin(StringView text) {
    MariaDbLogin login;
    size_t pos = 0;
    while (pos <= text.size()) {
        size_t end = text.find(u';', pos);
        if (end == StringView::npos) end = text.size();
        StringView item = text.substr(pos, end - pos);
        pos = end + 1;
        size_t eq = item.find(u'=');
        if (eq == StringView::npos) continue;
        String key = UCase(Strip(item.substr(0, eq)));
        std::string value = ToUtf8(Strip(item.substr(eq + 1)));
        if (key == u"SERVER") login.host = value;
        else if (key == u"UID" || key == u"USER") login.user = value;
        else if (key == u"PASSWORD" || key == u"PWD") login.password = value;
        else if (key == u"DATABASE" || key == u"DB") login.database = value;
        else if (key == u"SOCKET") login.socket = value;
        else if (key == u"PORT") login.port = Number<unsigned>(value, 3306);
        else if (key == u"OPTION") login.option = Number<uint32_t>(value, 0);
    }
    return login;
}

} // namespace zolsdk::ado::detail
