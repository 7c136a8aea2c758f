#pragma once
// A small XML DOM over libxml2, with just the operations the XML engine
// uses: load and save a file, the parse report of the last load, XPath 1.0
// selection, node lists counted from 0, named attributes and node text.
//
// Text crosses this boundary as UTF-16; libxml2's UTF-8 stays inside.
// Every node and node list shares ownership of the document it came from,
// so a node outlives a later load() or the DOMDocument object itself.
// libxml2 headers are not exposed here: callers (and tests) need only this.
#include <cstdint>
#include <memory>
#include <vector>

#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/variant.hpp"

struct _xmlNode;

namespace zolsdk::xml {

// Number of a DOM failure (malformed expression, unsupported property,
// nothing to save): the platform's generic "unspecified failure".
constexpr int32_t kDomFailure = static_cast<int32_t>(0x80004005u);
inline constexpr char16_t kDomSource[] = u"zolsdk.xml";

struct DocumentHandle;  // owns one parsed libxml2 document (or none)

class DOMNamedNodeMap;

class DOMNode : public Object {
public:
    DOMNode(std::shared_ptr<DocumentHandle> doc, _xmlNode* node) : doc_(std::move(doc)), node_(node) {}

    // Element or attribute name.
    String nodeName() const;
    // An attribute's value; for an element, the text of all its
    // descendants without the leading and trailing white space.
    String text() const;
    // The element's named attributes (empty map for other nodes).
    Ref<DOMNamedNodeMap> attributes() const;

private:
    std::shared_ptr<DocumentHandle> doc_;
    _xmlNode* node_;
};

class DOMNamedNodeMap : public Object {
public:
    DOMNamedNodeMap(std::shared_ptr<DocumentHandle> doc, _xmlNode* element) : doc_(std::move(doc)), element_(element) {}
    // The attribute node, or nothing when the element has no such attribute.
    Ref<DOMNode> getNamedItem(StringView name) const;
    int32_t length() const;

private:
    std::shared_ptr<DocumentHandle> doc_;
    _xmlNode* element_;
};

class DOMNodeList : public Object {
public:
    DOMNodeList(std::shared_ptr<DocumentHandle> doc, std::vector<_xmlNode*> nodes)
        : doc_(std::move(doc)), nodes_(std::move(nodes)) {}

    int32_t length() const { return static_cast<int32_t>(nodes_.size()); }
    // From 0, in document order; nothing when the index is out of range.
    Ref<DOMNode> item(int32_t index) const;

private:
    std::shared_ptr<DocumentHandle> doc_;
    std::vector<_xmlNode*> nodes_;
};

// What the last load() found wrong; errorCode 0 when it found nothing.
class DOMParseError : public Object {
public:
    int32_t errorCode() const { return errorCode_; }
    const String& reason() const { return reason_; }   // ends with CR LF when set
    const String& srcText() const { return srcText_; } // the offending line of the file
    int32_t line() const { return line_; }
    int32_t linepos() const { return linepos_; }

private:
    friend class DOMDocument;
    int32_t errorCode_ = 0;
    String reason_, srcText_;
    int32_t line_ = 0, linepos_ = 0;
};

class DOMDocument : public Object {
public:
    DOMDocument();
    ~DOMDocument() override;

    // load() always completes before it returns; the flag is kept so that
    // callers can state what they rely on.
    void async(bool value) { async_ = value; }
    bool async() const { return async_; }

    // Only "SelectionLanguage" = "XPath" is known; anything else is a
    // DOM failure, so that a caller never silently gets another language.
    void setProperty(StringView name, const Variant& value);

    // Replaces the document with the file's. A missing, unreadable or
    // malformed file gives false, an empty document and a parseError();
    // it never raises. Back-slashes in the path are folder separators.
    bool load(StringView path);
    // Writes the document to the file (replacing it). File-system failures
    // carry the platform's file numbers (75, 76, ...); an empty document is
    // a DOM failure, since there is nothing well-formed to write.
    void save(StringView path) const;

    Ref<DOMParseError> parseError() const { return parseError_; }

    // XPath 1.0 from the document node. A malformed expression, or one that
    // does not give a node set, is a DOM failure; on an empty document a
    // valid expression gives an empty list.
    Ref<DOMNodeList> selectNodes(StringView expression) const;
    // The first node of selectNodes, or nothing.
    Ref<DOMNode> selectSingleNode(StringView expression) const;

    bool IsEmpty() const;

private:
    bool async_ = true;
    std::shared_ptr<DocumentHandle> doc_;
    Ref<DOMParseError> parseError_;
};

} // namespace zolsdk::xml
