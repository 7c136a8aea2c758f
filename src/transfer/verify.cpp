#include "transfer/verify.hpp"

#include <unordered_map>

#include "transfer/rows.hpp"
#include "transfer/values.hpp"

namespace zolsdk::transfer {

namespace {

struct Keyed {
    std::vector<size_t> keyIndex;
    explicit Keyed(const TablePlan& t) {
        for (const String& k : t.keyColumns)
            for (size_t i = 0; i < t.columns.size(); ++i)
                if (EqualsNoCase(t.columns[i].name, k)) keyIndex.push_back(i);
    }
    std::string Key(const TablePlan& t, const std::vector<Variant>& row) const {
        std::string s;
        for (size_t i : keyIndex) Normalise(t.columns[i].kind, row[i], s);
        return s;
    }
    String Shown(const TablePlan& t, const std::vector<Variant>& row) const {
        String s;
        for (size_t i : keyIndex) {
            if (!s.empty()) s += u", ";
            s += t.columns[i].name + u"=" + transfer::Shown(row[i]);
        }
        return s;
    }
};

} // namespace

uint64_t RowHash(const TablePlan& t, const std::vector<Variant>& row, std::vector<uint64_t>* columns) {
    std::string buf, hashes;
    for (size_t i = 0; i < row.size(); ++i) {
        buf.clear();
        Normalise(t.columns[i].kind, row[i], buf);
        uint64_t h = Hash64(buf);
        if (columns) columns->push_back(h);
        hashes.append(reinterpret_cast<const char*>(&h), sizeof h);
    }
    return Hash64(hashes);
}

TableSum Checksum(ado::Connection& c, Engine e, const TablePlan& t, const KeyRange& range,
                  const std::atomic<bool>* cancel) {
    TableSum s;
    RowReader r(c, e, t, range);
    while (r.Next()) {
        s.sum += RowHash(t, r.Row());
        ++s.rows;
        if (cancel && (s.rows & 4095) == 0 && cancel->load()) break;
    }
    return s;
}

String FirstDifference(ado::Connection& source, Engine se, ado::Connection& target, Engine te, const TablePlan& t,
                       const KeyRange& range) {
    Keyed keyed(t);
    // The target's rows by key: how many, and each column's hash.
    struct Seen {
        std::vector<uint64_t> columns;
        int64_t count = 0;
        String shown;
    };
    std::unordered_map<std::string, Seen> there;
    {
        RowReader r(target, te, t, range);
        while (r.Next()) {
            Seen& s = there[keyed.Key(t, r.Row())];
            if (s.count++ == 0) {
                RowHash(t, r.Row(), &s.columns);
                s.shown = keyed.Shown(t, r.Row());
            }
        }
    }
    RowReader r(source, se, t, range);
    std::vector<uint64_t> cols;
    while (r.Next()) {
        auto it = there.find(keyed.Key(t, r.Row()));
        String shown = keyed.Shown(t, r.Row());
        if (it == there.end() || it->second.count == 0) return u"row (" + shown + u") missing on the target";
        cols.clear();
        RowHash(t, r.Row(), &cols);
        for (size_t i = 0; i < cols.size() && i < it->second.columns.size(); ++i)
            if (cols[i] != it->second.columns[i])
                return u"row (" + shown + u"), column " + t.columns[i].name + u": source " + Shown(r.Row()[i]);
        --it->second.count;
    }
    for (auto& [key, s] : there)
        if (s.count > 0) return u"row (" + s.shown + u") on the target has no source row";
    return u"the sums differ but no row does (rows with the same key)";
}

} // namespace zolsdk::transfer
