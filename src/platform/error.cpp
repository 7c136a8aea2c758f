#include "zolsdk/platform/error.hpp"

#include <new>
#include "platform/failure_chain.hpp"

namespace zolsdk {

DbError::DbError(int32_t number, String source, String description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {
    Refresh();
}

void DbError::Description(String d) {
    description_ = std::move(d);
    Refresh();
}

void DbError::AppendTrace(StringView literal, int line) {
    source_ += u" => \r\n";
    source_ += literal;
    source_ += IntText(line);
    Refresh();
}

void DbError::Refresh() {
    what_ = std::to_string(number_) + " " + ToUtf8(description_);
}

String PlatformErrorText(int32_t n) {
    switch (n) {
    case err::InvalidCall: return u"Invalid procedure call or argument";
    case err::Overflow: return u"Overflow";
    case err::OutOfMemory: return u"Out of memory";
    case err::SubscriptOutOfRange: return u"Subscript out of range";
    case err::DivisionByZero: return u"Division by zero";
    case err::TypeMismatch: return u"Type mismatch";
    case err::Internal: return u"Internal error";
    case err::FileNotFound: return u"File not found";
    case err::FileAlreadyExists: return u"File already exists";
    case err::PermissionDenied: return u"Permission denied";
    case err::PathFileAccess: return u"Path/File access error";
    case err::PathNotFound: return u"Path not found";
    case err::ObjectNotSet: return u"Object variable or With block variable not set";
    case err::InvalidUseOfNull: return u"Invalid use of Null";
    case err::DuplicateKey: return u"This key is already associated with an element of this collection";
    case err::AdoArguments:
        return u"Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.";
    case err::AdoNoCurrentRecord:
        return u"Either BOF or EOF is True, or the current record has been deleted. Requested operation requires a current record.";
    case err::AdoItemNotFound:
        return u"Item cannot be found in the collection corresponding to the requested name or ordinal.";
    case err::AdoNotAllowedClosed: return u"Operation is not allowed when the object is closed.";
    case err::AdoNotAllowedOpen: return u"Operation is not allowed when the object is open.";
    case err::AdoMultipleStep: return u"Multiple-step operation generated errors. Check each status value.";
    default: return {};
    }
}

static String PlatformSource(int32_t n) {
    if (n >= 3000 && n < 4000) return u"ADODB.Recordset";
    if (n == err::AdoMultipleStep) return u"Microsoft Cursor Engine";
    return u"zolsdk";
}

void RaisePlatform(int32_t number, StringView detail) {
    String text = PlatformErrorText(number);
    if (!detail.empty()) {
        if (text.empty()) text = String(detail);
        else { text += u" ("; text += detail; text += u")"; }
    }
    throw DbError(number, PlatformSource(number), std::move(text));
}

void RaisePlatformFrom(int32_t number, StringView source, StringView description) {
    throw DbError(number, String(source), String(description));
}

DbError CurrentFailure() {
    try {
        throw;
    } catch (const DbError& e) {
        return e;
    } catch (const std::bad_alloc&) {
        return DbError(err::OutOfMemory, u"zolsdk", PlatformErrorText(err::OutOfMemory));
    } catch (const std::exception& e) {
        return DbError(err::Internal, u"zolsdk", PlatformErrorText(err::Internal) + u": " + FromUtf8(e.what()));
    } catch (...) {
        return DbError(err::Internal, u"zolsdk", PlatformErrorText(err::Internal));
    }
}

void RoutineMark::Reraise() const {
    DbError e = CurrentFailure();
    e.AppendTrace(literal, line);
    throw e;
}

} // namespace zolsdk
