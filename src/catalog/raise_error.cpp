#include "catalog/raise_error.hpp"

#include "support/replace_text.hpp"

namespace zolsdk {

String ErrorText(int32_t id) {
    switch (id) {
    case errnum::ErrInvalidConditionOperator: return u"Condition operator '%0' is not valid for attrribute '%1'.";
    case errnum::ErrDbNotInitialized: return u"Database object not initialized.";
    case errnum::ErrCreateDb:
        return u"You do not have the privilege to create database or the database already exists.";
    case errnum::ErrConnect: return u"Failed to connect to database '%0'. (Reason: %1)";
    case errnum::ErrUnexpected: return u"Unexpected Error.";
    default: return {};
    }
}

void RaiseError(int32_t id, StringView, const std::vector<Variant>& arguments) {
    String text = ErrorText(id);
    int32_t index = 0;
    for (const Variant& a : arguments) {
        int32_t count = 0;
        text = ReplaceText(text, u"%" + IntText(index), a.ToString(), 1, count, false);
        ++index;
    }
    throw DbError(errnum::Number(id), kLibrarySource, std::move(text));
}

} // namespace zolsdk
