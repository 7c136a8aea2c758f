#pragma once
// The criteria tree is a composite walked by a visitor: an inner node is an
// IComposite, a condition an ILeaf. Every call answers true to go on; false
// stops the walk.
#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"

namespace zolsdk {

class IVisitor;

class ZOLSDK_API IComposite : public Object {
public:
    virtual bool Accept(const Ref<IVisitor>& poVisitor) = 0;
};

class ZOLSDK_API ILeaf : public Object {
public:
    virtual bool Accept(const Ref<IVisitor>& poVisitor) = 0;
};

class ZOLSDK_API IVisitor : public Object {
public:
    virtual bool Visit(const Ref<ILeaf>& poLeaf) = 0;
    virtual bool VisitEnter(const Ref<IComposite>& poComposite) = 0;
    virtual bool VisitLeave(const Ref<IComposite>& poComposite) = 0;
};

} // namespace zolsdk
