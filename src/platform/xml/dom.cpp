#include "platform/xml/dom.hpp"

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xpath.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>

#include "support/copy_to_file.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk::xml {

struct DocumentHandle {
    explicit DocumentHandle(xmlDocPtr d) : doc(d) {}
    ~DocumentHandle() {
        if (doc) xmlFreeDoc(doc);
    }
    DocumentHandle(const DocumentHandle&) = delete;
    DocumentHandle& operator=(const DocumentHandle&) = delete;
    xmlDocPtr doc;
};

namespace {

void InitLibrary() {
    static std::once_flag once;
    std::call_once(once, [] { xmlInitParser(); });
}

const xmlChar* X(const std::string& s) { return reinterpret_cast<const xmlChar*>(s.c_str()); }

String FromXml(const xmlChar* s) {
    return s ? FromUtf8(reinterpret_cast<const char*>(s)) : String();
}

[[noreturn]] void RaiseDom(StringView description) {
    RaisePlatformFrom(kDomFailure, kDomSource, description);
}

String TrimEnd(String s) {
    while (!s.empty() && (s.back() == u'\n' || s.back() == u'\r' || s.back() == u' ')) s.pop_back();
    return s;
}

bool IsXmlSpace(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

// Collects the first error libxml2 reports while it is alive, instead of
// letting the library print it; the thread's previous handler comes back
// afterwards.
class ErrorCapture {
public:
    ErrorCapture() : oldHandler_(xmlStructuredError), oldContext_(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(this, &ErrorCapture::Handler);
    }
    ~ErrorCapture() { xmlSetStructuredErrorFunc(oldContext_, oldHandler_); }
    ErrorCapture(const ErrorCapture&) = delete;
    ErrorCapture& operator=(const ErrorCapture&) = delete;

    bool any = false;
    int code = 0;
    String message;
    int line = 0;
    int column = 0;
    int position = -1;

private:
    xmlStructuredErrorFunc oldHandler_;
    void* oldContext_;

    static void Handler(void* data, xmlErrorPtr e) {
        auto* self = static_cast<ErrorCapture*>(data);
        if (self->any || !e || e->level == XML_ERR_WARNING) return;
        self->any = true;
        self->code = e->code;
        self->message = TrimEnd(FromXml(reinterpret_cast<const xmlChar*>(e->message)));
        self->line = e->line;
        self->column = e->int2;
        if (e->domain == XML_FROM_XPATH) self->position = e->int1;
    }
};

// Line `line` (from 1) of the raw file, without its line end.
String SourceLine(const std::string& bytes, int line) {
    if (line < 1) return {};
    size_t start = 0;
    for (int i = 1; i < line; ++i) {
        size_t nl = bytes.find('\n', start);
        if (nl == std::string::npos) return {};
        start = nl + 1;
    }
    size_t end = bytes.find('\n', start);
    std::string text = bytes.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (!text.empty() && text.back() == '\r') text.pop_back();
    return FromUtf8(text);
}

} // namespace

// ---- nodes -----------------------------------------------------------------

String DOMNode::nodeName() const { return FromXml(node_->name); }

String DOMNode::text() const {
    xmlChar* content = xmlNodeGetContent(node_);
    String s = FromXml(content);
    xmlFree(content);
    if (node_->type == XML_ELEMENT_NODE || node_->type == XML_DOCUMENT_NODE) {
        size_t b = 0, e = s.size();
        while (b < e && IsXmlSpace(s[b])) ++b;
        while (e > b && IsXmlSpace(s[e - 1])) --e;
        s = s.substr(b, e - b);
    }
    return s;
}

Ref<DOMNamedNodeMap> DOMNode::attributes() const {
    return Ref<DOMNamedNodeMap>::New(doc_, node_->type == XML_ELEMENT_NODE ? node_ : nullptr);
}

Ref<DOMNode> DOMNamedNodeMap::getNamedItem(StringView name) const {
    if (!element_ || name.empty()) return nullptr;
    xmlAttrPtr attr = xmlHasProp(element_, X(ToUtf8(name)));
    if (!attr) return nullptr;
    return Ref<DOMNode>::New(doc_, reinterpret_cast<xmlNodePtr>(attr));
}

int32_t DOMNamedNodeMap::length() const {
    int32_t n = 0;
    if (element_)
        for (xmlAttrPtr a = element_->properties; a; a = a->next) ++n;
    return n;
}

Ref<DOMNode> DOMNodeList::item(int32_t index) const {
    if (index < 0 || index >= length()) return nullptr;
    return Ref<DOMNode>::New(doc_, nodes_[static_cast<size_t>(index)]);
}

// ---- document --------------------------------------------------------------

DOMDocument::DOMDocument()
    : doc_(std::make_shared<DocumentHandle>(nullptr)), parseError_(Ref<DOMParseError>::New()) {
    InitLibrary();
}

DOMDocument::~DOMDocument() = default;

bool DOMDocument::IsEmpty() const { return doc_->doc == nullptr; }

void DOMDocument::setProperty(StringView name, const Variant& value) {
    if (name == u"SelectionLanguage") {
        if (value.ToString() == u"XPath") return;
        RaiseDom(u"The selection language '" + value.ToString() + u"' is not supported; only XPath is.");
    }
    RaiseDom(u"The property '" + String(name) + u"' is not supported.");
}

bool DOMDocument::load(StringView path) {
    // Whatever happens, the old document is gone: nodes taken from it keep
    // their own share of it.
    doc_ = std::make_shared<DocumentHandle>(nullptr);
    auto report = Ref<DOMParseError>::New();
    parseError_ = report;

    std::string file = FileSystemPath(path);
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        int e = errno;
        report->errorCode_ = e == ENOENT || e == ENOTDIR ? XML_IO_ENOENT : e == EACCES ? XML_IO_EACCES : XML_IO_LOAD_ERROR;
        report->reason_ = u"The file '" + FromUtf8(file) + u"' cannot be opened: " + FromUtf8(std::strerror(e)) + u"\r\n";
        return false;
    }
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());

    ErrorCapture capture;
    xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
    if (!ctxt) {
        report->errorCode_ = XML_ERR_NO_MEMORY;
        report->reason_ = u"Out of memory while reading the document.\r\n";
        return false;
    }
    // No network, no external entities: a database file stands alone.
    xmlDocPtr d = xmlCtxtReadMemory(ctxt, bytes.data(), static_cast<int>(bytes.size()), file.c_str(), nullptr,
                                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    bool ok = d != nullptr && ctxt->wellFormed;
    xmlFreeParserCtxt(ctxt);
    if (ok && xmlDocGetRootElement(d) == nullptr) ok = false;
    if (!ok) {
        if (d) xmlFreeDoc(d);
        report->errorCode_ = capture.any && capture.code != 0 ? capture.code : XML_ERR_DOCUMENT_EMPTY;
        report->reason_ = (capture.any ? capture.message : String(u"Document is empty")) + u"\r\n";
        report->line_ = capture.line;
        report->linepos_ = capture.column;
        report->srcText_ = SourceLine(bytes, capture.line);
        return false;
    }
    doc_ = std::make_shared<DocumentHandle>(d);
    return true;
}

void DOMDocument::save(StringView path) const {
    if (!doc_->doc) RaiseDom(u"The document is empty: there is nothing to save.");
    xmlChar* mem = nullptr;
    int size = 0;
    xmlDocDumpMemory(doc_->doc, &mem, &size);
    if (!mem) RaisePlatform(err::OutOfMemory);
    std::string bytes(reinterpret_cast<const char*>(mem), static_cast<size_t>(size));
    xmlFree(mem);

    std::string file = FileSystemPath(path);
    errno = 0;
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (!out) RaiseFileError(errno ? errno : EIO, FromUtf8(file));
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) RaiseFileError(errno ? errno : EIO, FromUtf8(file));
}

Ref<DOMNodeList> DOMDocument::selectNodes(StringView expression) const {
    std::string expr = ToUtf8(expression);
    ErrorCapture capture;
    auto fail = [&](StringView what) {
        String d(what);
        if (capture.any) d += u": " + capture.message;
        if (capture.position >= 0) {
            // libxml2 counts bytes; the caller's text counts characters.
            d += u" at position " + IntText(static_cast<int64_t>(FromUtf8(expr.substr(0, static_cast<size_t>(capture.position))).size()) + 1);
        }
        d += u" in \"" + String(expression) + u"\".";
        RaiseDom(d);
    };

    xmlXPathContextPtr ctx = xmlXPathNewContext(doc_->doc);
    if (!ctx) RaisePlatform(err::OutOfMemory);
    xmlXPathCompExprPtr comp = xmlXPathCtxtCompile(ctx, X(expr));
    if (!comp) {
        xmlXPathFreeContext(ctx);
        fail(u"Invalid XPath expression");
    }
    if (!doc_->doc) {
        xmlXPathFreeCompExpr(comp);
        xmlXPathFreeContext(ctx);
        return Ref<DOMNodeList>::New(doc_, std::vector<_xmlNode*>{});
    }
    ctx->node = reinterpret_cast<xmlNodePtr>(doc_->doc);
    xmlXPathObjectPtr result = xmlXPathCompiledEval(comp, ctx);
    xmlXPathFreeCompExpr(comp);
    xmlXPathFreeContext(ctx);
    if (!result) fail(u"The XPath expression cannot be evaluated");
    if (result->type != XPATH_NODESET) {
        xmlXPathFreeObject(result);
        fail(u"The XPath expression does not give a node set");
    }
    std::vector<_xmlNode*> nodes;
    if (result->nodesetval)
        for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
            xmlNodePtr n = result->nodesetval->nodeTab[i];
            // Namespace entries of a node set are no tree nodes: leave them out.
            if (n && n->type != XML_NAMESPACE_DECL) nodes.push_back(n);
        }
    xmlXPathFreeObject(result);
    return Ref<DOMNodeList>::New(doc_, std::move(nodes));
}

Ref<DOMNode> DOMDocument::selectSingleNode(StringView expression) const {
    return selectNodes(expression)->item(0);
}

} // namespace zolsdk::xml
