#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

const char* OutcomeName(Outcome o) {
    switch (o) {
    case Outcome::Verified: return "verified";
    case Outcome::Created: return "created";
    case Outcome::Mismatch: return "MISMATCH";
    case Outcome::Failed: return "FAILED";
    case Outcome::HalfMade: return "FAILED, left half-made";
    case Outcome::Cancelled: return "cancelled";
    }
    return "?";
}

bool Report::Ok() const {
    for (const auto& t : tables)
        if (!t.Ok()) return false;
    return true;
}

String Report::Text() const {
    String s;
    int ok = 0;
    bool anyRows = false;
    for (const auto& t : tables) {
        s += u"  " + t.table + u": " + Ascii(OutcomeName(t.outcome));
        if (t.rowsRead >= 0) {
            anyRows = true;
            s += u", rows read " + IntText(t.rowsRead) + u", rows written " + IntText(t.rowsWritten);
        }
        if (t.outcome == Outcome::Mismatch && t.verification.done)
            s += u", target rows " + IntText(t.verification.targetRows) + u"; first difference: " +
                 t.verification.firstDifference;
        if (!t.failure.empty()) s += u" (" + t.failure + u")";
        s += u"\n";
        for (const auto& c : t.changes) s += u"    changed: " + c + u"\n";
        if (t.Ok()) ++ok;
    }
    for (const auto& n : notes) s += u"  note: " + n + u"\n";
    s += IntText(ok) + u" of " + IntText(static_cast<int64_t>(tables.size())) +
         (verifyOnly ? u" tables verified\n" : anyRows ? u" tables copied and verified\n" : u" tables created\n");
    return s;
}

} // namespace zolsdk::transfer
