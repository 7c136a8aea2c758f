#pragma once
// Renders a criteria tree as the filter text of one engine. The builder
// walks the tree as its visitor and keeps a stack of texts: a condition
// pushes the predicate its dialect renders, a group pushes an opening mark
// on enter and folds everything above that mark into one parenthesised
// text on leave.
//
// Make it with Ref<DbConditionBuilder>::New(): ToString hands the object
// itself to the tree as its visitor, which needs a shared owner.
#include <cstdint>
#include <vector>

#include "data/codecs.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/query/query.hpp"
#include "zolsdk/query/visitor.hpp"

namespace zolsdk {

class DbConditionBuilder : public IVisitor {
public:
    DbConditionBuilder();

    // The filter for `criteria` in the dialect of `builder`. Every column is
    // qualified by `alias` (the query's table name). A missing tree gives
    // empty text; a root with no content at all is a failure.
    String ToString(const Ref<IDbSqlBuilder>& builder, const Ref<IComposite>& criteria,
                    const Ref<DbParameters>& parameters, const String& alias);

    bool Visit(const Ref<ILeaf>& poLeaf) override;
    bool VisitEnter(const Ref<IComposite>& poComposite) override;
    bool VisitLeave(const Ref<IComposite>& poComposite) override;

private:
    DbGenericEncoder encoder_;
    Ref<IComposite> criteria_;
    Ref<DbParameters> parameters_;
    String alias_;
    std::vector<String> stack_;
    int32_t capacity_ = 0; // the stack's upper bound: capacity_ + 1 places
    Ref<IDbSqlBuilder> builder_;
    int32_t top_ = 0;      // the next free place

    void Push(const String& text);
    String Pop();
    void ResizeArray();
    // The condition's value in the transfer form of its type group.
    String ValueText(const DbCondition& condition);
};

} // namespace zolsdk
