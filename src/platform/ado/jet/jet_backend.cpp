// The Access (Jet) backend: "Provider=Microsoft.Jet.OLEDB.4.0;Data
// Source=PATH;...;Jet OLEDB:Database Password=PW". Statements run through the
// JDBC driver for Jet files in the embedded JVM, translated first where its
// SQL differs from Jet's (jet_sql.hpp); schema rowsets come from the file's
// own catalog. Every call into Java for one connection is made under that
// connection's lock: an asynchronous fetch reads its cursor on a background
// thread while the caller may run other statements.
#include <deque>

#include "platform/ado/backend.hpp"
#include "platform/ado/jet/jet_files.hpp"
#include "platform/ado/jet/jet_schema.hpp"
#include "platform/ado/jet/jet_sql.hpp"
#include "platform/ado/jet/jet_types.hpp"
#include "platform/ado/jet/jet_wire.hpp"
#include "platform/ado/jet/jvm.hpp"
#include "support/split.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk::ado {

namespace {

struct JetText {
    String path;
    String password;
    String engineType;
};

// The connection text's items; keys compare without regard to case, and
// the last of two equal keys wins (Connection::Open appends PWD=).
JetText ParseJetText(const String& text) {
    JetText out;
    for (const String& item : Split(text, u";")) {
        size_t eq = item.find(u'=');
        if (eq == String::npos) continue;
        String key = Trim(item.substr(0, eq));
        String value = item.substr(eq + 1);
        if (EqualsNoCase(key, u"Data Source")) out.path = Trim(value);
        else if (EqualsNoCase(key, u"Jet OLEDB:Database Password") || EqualsNoCase(key, u"PWD") ||
                 EqualsNoCase(key, u"Password"))
            out.password = value;
        else if (EqualsNoCase(key, u"Jet OLEDB:Engine Type")) out.engineType = Trim(value);
    }
    for (char16_t& c : out.path)
        if (c == u'\\') c = u'/';
    return out;
}

} // namespace

String JetDataSource(const String& connectionText) { return ParseJetText(connectionText).path; }

#if ZOLSDK_JET_AVAILABLE

namespace detail {

using namespace jet;

namespace {

// What a connection shares with its cursors.
struct JetLink {
    std::mutex lock;
    Global link;
    bool open = false;
    uint64_t generation = 0; // bumped at each close: older cursors are finished
};

class JetCursor final : public Cursor {
public:
    JetCursor(std::shared_ptr<JetLink> link, Global result, std::vector<ColumnInfo> cols)
        : link_(std::move(link)), result_(std::move(result)), gen_(link_->generation), cols_(std::move(cols)) {}

    ~JetCursor() override {
        try {
            std::lock_guard<std::mutex> g(link_->lock);
            CloseResult();
        } catch (...) {
            // Nothing may leave a destructor.
        }
    }

    const std::vector<ColumnInfo>& Columns() const override { return cols_; }

    bool Fetch(std::vector<Variant>& row) override {
        if (buffered_.empty()) {
            std::lock_guard<std::mutex> g(link_->lock);
            if (done_) return false;
            if (!link_->open || link_->generation != gen_)
                throw ProviderFailure({{0, u"08003", u"the connection to the Access file was closed"}});
            Refill();
            if (buffered_.empty()) return false;
        }
        row = std::move(buffered_.front());
        buffered_.pop_front();
        return true;
    }

    void Cancel() override {
        std::lock_guard<std::mutex> g(link_->lock);
        done_ = true;
        CloseResult();
    }

private:
    // Rows cross in batches: one call into Java for many rows.
    static constexpr jint kBatch = 512;
    std::shared_ptr<JetLink> link_;
    Global result_;
    uint64_t gen_;
    std::vector<ColumnInfo> cols_;
    std::deque<std::vector<Variant>> buffered_;
    bool done_ = false;

    void Refill() {
        JNIEnv* env = Env();
        const Bridge& b = Classes(env);
        LocalFrame frame(env);
        auto bytes = static_cast<jbyteArray>(env->CallObjectMethod(result_.get(), b.resultFetch, kBatch));
        Check(env);
        std::vector<uint8_t> data = FromJavaBytes(env, bytes);
        WireReader r(data);
        int32_t n = r.Int();
        if (n == 0) {
            done_ = true;
            CloseResult();
            return;
        }
        for (int32_t i = 0; i < n; ++i) {
            std::vector<Variant> row;
            row.reserve(cols_.size());
            for (const ColumnInfo& c : cols_) row.push_back(FitToField(r.Value(), c.type));
            buffered_.push_back(std::move(row));
        }
    }

    void CloseResult() {
        if (!result_) return;
        if (link_->open && link_->generation == gen_) {
            JNIEnv* env = Env();
            env->CallVoidMethod(result_.get(), Classes(env).resultClose);
            if (env->ExceptionCheck()) env->ExceptionClear();
        }
        result_.reset();
    }
};

// The one row of a count read from the file.
class CountCursor final : public Cursor {
public:
    explicit CountCursor(int64_t n) : n_(n) {
        ColumnInfo c;
        c.name = u"Expr1000";
        c.type = adType::Integer;
        c.size = 4;
        c.precision = 10;
        cols_.push_back(std::move(c));
    }
    const std::vector<ColumnInfo>& Columns() const override { return cols_; }
    bool Fetch(std::vector<Variant>& row) override {
        if (done_) return false;
        done_ = true;
        row.assign(1, n_ <= INT32_MAX ? Variant(static_cast<int32_t>(n_)) : Variant::FromInt64(n_));
        return true;
    }
    void Cancel() override { done_ = true; }

private:
    int64_t n_;
    bool done_ = false;
    std::vector<ColumnInfo> cols_;
};

// One value of a statement as the Java half reads it.
void PutValue(WireWriter& w, const JetValue& v, const std::vector<Ref<Parameter>>& params) {
    switch (v.kind) {
    case JetValue::Kind::Param:
        if (v.param < 0 || static_cast<size_t>(v.param) >= params.size())
            throw ProviderFailure({{-3010, u"07002", u"No value given for one or more required parameters."}});
        w.Parameter(params[static_cast<size_t>(v.param)]->Type(), params[static_cast<size_t>(v.param)]->Value());
        return;
    case JetValue::Kind::Null:
        w.Byte('N');
        w.Int(0);
        return;
    case JetValue::Kind::Text:
        w.Byte('S');
        w.Text(v.text);
        return;
    case JetValue::Kind::Boolean:
        w.Byte('Z');
        w.Byte(v.truth ? 1 : 0);
        return;
    case JetValue::Kind::Number: {
        // Whole numbers as integers, others as exact decimals: the column's
        // type decides what they become, never a double on the way.
        bool whole = v.text.find_first_not_of(u"-+0123456789") == String::npos;
        if (whole && v.text.size() <= 18) {
            w.Byte('J');
            w.Long(std::stoll(ToUtf8(v.text)));
        } else {
            w.Byte('M');
            w.Text(v.text);
        }
        return;
    }
    case JetValue::Kind::Date: {
        DateParts p;
        ParseJetDate(v.text, p);
        w.Byte('T');
        w.Int(p.year);
        w.Byte(static_cast<uint8_t>(p.month));
        w.Byte(static_cast<uint8_t>(p.day));
        w.Byte(static_cast<uint8_t>(p.hour));
        w.Byte(static_cast<uint8_t>(p.minute));
        w.Byte(static_cast<uint8_t>(p.second));
        w.Int(0);
        return;
    }
    }
}

jobjectArray NamesToJava(JNIEnv* env, const Bridge& b, const std::vector<String>& names) {
    if (names.empty()) return nullptr;
    jobjectArray a = env->NewObjectArray(static_cast<jsize>(names.size()), b.string, nullptr);
    Check(env);
    for (size_t i = 0; i < names.size(); ++i) env->SetObjectArrayElement(a, static_cast<jsize>(i), ToJava(env, names[i]));
    return a;
}

jbooleanArray DirectionsToJava(JNIEnv* env, const std::vector<bool>& ascending) {
    jbooleanArray a = env->NewBooleanArray(static_cast<jsize>(ascending.size()));
    Check(env);
    for (size_t i = 0; i < ascending.size(); ++i) {
        jboolean up = ascending[i] ? JNI_TRUE : JNI_FALSE;
        env->SetBooleanArrayRegion(a, static_cast<jsize>(i), 1, &up);
    }
    return a;
}

std::vector<ColumnInfo> DescribeColumns(const std::vector<uint8_t>& data) {
    WireReader r(data);
    int32_t n = r.Int();
    std::vector<ColumnInfo> cols;
    for (int32_t i = 0; i < n; ++i) {
        ColumnInfo c;
        c.name = r.Text();
        String fileType = r.Text();
        int32_t sqlType = r.Int();
        int32_t length = r.Int();
        int32_t precision = r.Int();
        int32_t scale = r.Int();
        bool hyperlink = r.Boolean();
        AccessFigures f = fileType.empty() ? FiguresOfSqlType(sqlType, length, precision, scale)
                          : hyperlink      ? FiguresOfFileType(u"MEMO", 0, 0, 0)
                                           : FiguresOfFileType(fileType, length, precision, scale);
        c.type = f.fieldType;
        c.size = f.definedSize;
        if (f.fieldType == adType::Numeric) {
            c.precision = static_cast<uint8_t>(f.precision.ToLong());
            c.scale = static_cast<uint8_t>(f.scale.ToLong());
        } else if (!f.precision.IsNull()) {
            c.precision = static_cast<uint8_t>(f.precision.ToLong());
        }
        cols.push_back(std::move(c));
    }
    return cols;
}

// Types compare by name; lengths for text and binary, precision and scale
// for decimals (the form of JetFileType).
bool SameFileType(const String& have, const String& want) {
    std::vector<String> a = Split(have, u":"), b = Split(want, u":");
    if (a.size() != 4 || b.size() != 4 || a[0] != b[0]) return false;
    if (a[0] == u"TEXT" || a[0] == u"BINARY") return a[1] == b[1];
    if (a[0] == u"NUMERIC") return a[2] == b[2] && a[3] == b[3];
    return true;
}

String TypeWords(const String& fileType) {
    std::vector<String> p = Split(fileType, u":");
    if (p.size() != 4) return fileType;
    if (p[0] == u"TEXT" || p[0] == u"BINARY") return p[0] + u"(" + p[1] + u")";
    if (p[0] == u"NUMERIC") return u"DECIMAL(" + p[2] + u"," + p[3] + u")";
    return p[0];
}

class JetBackend final : public Backend {
public:
    JetBackend() : link_(std::make_shared<JetLink>()) {}
    ~JetBackend() override {
        try {
            Close();
        } catch (...) {
            // Nothing may leave a destructor.
        }
    }

    void Open(const String& connectionText, int32_t) override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (link_->open) return;
        JetText t = ParseJetText(connectionText);
        if (t.path.empty())
            throw ProviderFailure({{0, u"HY000", u"the connection text names no file (Data Source is empty)"}});
        JNIEnv* env = Env();
        const Bridge& b = Classes(env);
        LocalFrame frame(env);
        jobject link = env->CallStaticObjectMethod(b.bridge, b.open, ToJava(env, t.path), ToJava(env, t.password));
        Check(env);
        link_->link = Global(env, link);
        link_->open = true;
    }

    void Close() override {
        std::lock_guard<std::mutex> g(link_->lock);
        if (!link_->open) return;
        link_->open = false;
        ++link_->generation;
        JNIEnv* env = Env();
        env->CallVoidMethod(link_->link.get(), Classes(env).linkClose);
        if (env->ExceptionCheck()) env->ExceptionClear();
        link_->link.reset();
    }

    bool IsOpen() const override { return link_->open; }

    int32_t ParameterMarks(StringView sql) const override { return CountJetParameterMarks(sql); }

    std::unique_ptr<Cursor> Execute(const String& sql, const std::vector<Ref<Parameter>>& params, int64_t& affected,
                                    int32_t) override {
        std::unique_lock<std::mutex> g(link_->lock);
        RequireOpen();
        JetStatement st = PrepareJetStatement(sql);
        if (!params.empty() && st.kind == JetStatement::Kind::SelectRows) st = DriverForm(sql);
        JNIEnv* env = Env();
        const Bridge& b = Classes(env);
        LocalFrame frame(env);
        jobject link = link_->link.get();
        affected = 0;
        switch (st.kind) {
        case JetStatement::Kind::Refused:
            throw ProviderFailure({{-1, u"0A000", st.refusal}});
        case JetStatement::Kind::CreateIndex: {
            if (!st.descending) {
                try {
                    RunPlain(env, b, st.sql, params.empty() ? std::vector<uint8_t>() : EncodeParameters(params),
                             !params.empty(), true, affected);
                    return nullptr;
                } catch (const ProviderFailure& f) {
                    // The name is taken by an index of another table: a
                    // clash of the driver's mirror, not of the file.
                    if (f.Errors().empty() || f.Errors().front().native != kNameExists) throw;
                }
            }
            env->CallVoidMethod(link, b.linkCreateIndex, ToJava(env, st.table), ToJava(env, st.name),
                                st.unique ? JNI_TRUE : JNI_FALSE, NamesToJava(env, b, st.columns),
                                DirectionsToJava(env, st.ascending));
            Check(env);
            return nullptr;
        }
        case JetStatement::Kind::AlterColumn: {
            auto have = static_cast<jstring>(
                env->CallObjectMethod(link, b.linkColumnType, ToJava(env, st.table), ToJava(env, st.name)));
            Check(env);
            String current = FromJava(env, have);
            if (!st.fileType.empty() && !SameFileType(current, st.fileType))
                throw ProviderFailure(
                    {{-1, u"0A000",
                      u"ALTER COLUMN cannot change the type of [" + st.name + u"] in an Access file through this provider (from " +
                          TypeWords(current) + u" to " + TypeWords(st.fileType) + u"); only NULL or NOT NULL can change"}});
            if (st.required >= 0) {
                env->CallVoidMethod(link, b.linkSetRequired, ToJava(env, st.table), ToJava(env, st.name),
                                    st.required ? JNI_TRUE : JNI_FALSE);
                Check(env);
            }
            return nullptr;
        }
        case JetStatement::Kind::PrimaryKey: {
            env->CallVoidMethod(link, b.linkCreatePrimaryKey, ToJava(env, st.table), ToJava(env, st.name),
                                NamesToJava(env, b, st.columns), DirectionsToJava(env, st.ascending));
            Check(env);
            return nullptr;
        }
        case JetStatement::Kind::InsertRows: {
            WireWriter w;
            w.Int(static_cast<int32_t>(st.rows.size()));
            w.Int(static_cast<int32_t>(st.rows.front().size()));
            for (const auto& row : st.rows)
                for (const JetValue& v : row) PutValue(w, v, params);
            try {
                jlong n = env->CallLongMethod(link, b.linkAddRows, ToJava(env, st.table), NamesToJava(env, b, st.columns),
                                              ToJavaBytes(env, w.Bytes()));
                Check(env);
                affected = n;
                return nullptr;
            } catch (const ProviderFailure& f) {
                if (f.Errors().empty() || f.Errors().front().sqlState != kNotDirect) throw;
            }
            st = DriverForm(sql);
            break;
        }
        case JetStatement::Kind::CountRows: {
            jlong n = env->CallLongMethod(link, b.linkCountRows, ToJava(env, st.table));
            Check(env);
            if (n >= 0) {
                affected = -1;
                return std::make_unique<CountCursor>(n);
            }
            st = DriverForm(sql);
            break;
        }
        case JetStatement::Kind::SelectRows: {
            jobject result = env->CallObjectMethod(link, b.linkSelect, ToJava(env, st.table), NamesToJava(env, b, st.columns));
            Check(env);
            if (result) return RowsOf(env, b, result, affected, g);
            st = DriverForm(sql);
            break;
        }
        case JetStatement::Kind::Plain: break;
        }
        std::vector<uint8_t> bound;
        if (!st.bound.empty()) {
            WireWriter w;
            w.Int(static_cast<int32_t>(st.bound.size()));
            for (const JetValue& v : st.bound) PutValue(w, v, params);
            bound = w.Bytes();
        } else if (!params.empty()) {
            bound = EncodeParameters(params);
        }
        jobject result = RunPlain(env, b, st.sql, bound, !st.bound.empty() || !params.empty(), st.changesTables, affected);
        if (!result) return nullptr;
        return RowsOf(env, b, result, affected, g);
    }

    // A cursor over the rows of a Java result; the connection's lock is let
    // go, the cursor takes it for each batch.
    std::unique_ptr<Cursor> RowsOf(JNIEnv* env, const Bridge& b, jobject result, int64_t& affected,
                                   std::unique_lock<std::mutex>& g) {
        std::vector<ColumnInfo> cols;
        try {
            auto described = static_cast<jbyteArray>(env->CallObjectMethod(result, b.resultColumns));
            Check(env);
            cols = DescribeColumns(FromJavaBytes(env, described));
        } catch (...) {
            env->CallVoidMethod(result, b.resultClose);
            if (env->ExceptionCheck()) env->ExceptionClear();
            throw;
        }
        affected = -1;
        Global kept(env, result);
        g.unlock();
        return std::make_unique<JetCursor>(link_, std::move(kept), std::move(cols));
    }

    Ref<Recordset> OpenSchema(int32_t schema, const std::vector<Variant>& criteria) override {
        std::lock_guard<std::mutex> g(link_->lock);
        RequireOpen();
        switch (schema) {
        case adSchemaTables: return TablesRowset(Facts(&Bridge::linkTables, nullptr), criteria);
        case adSchemaColumns: return ColumnsRowset(Facts(&Bridge::linkColumns, Criterion(criteria, 2)), criteria);
        case adSchemaIndexes: return IndexesRowset(Facts(&Bridge::linkIndexes, Criterion(criteria, 4)), criteria);
        case adSchemaPrimaryKeys:
            return PrimaryKeysRowset(Facts(&Bridge::linkIndexes, Criterion(criteria, 2)), criteria);
        case adSchemaForeignKeys: return ForeignKeysRowset(Facts(&Bridge::linkRelationships, nullptr), criteria);
        default:
            RaisePlatformFrom(adErrFeatureNotAvailable, kConnectionSource,
                              u"Object or provider is not capable of performing requested operation.");
        }
    }

private:
    // The driver's code for a name that its mirror has already.
    static constexpr int32_t kNameExists = -5504;
    // The Java half's word for rows that must go through the driver.
    static constexpr const char16_t* kNotDirect = u"ZJ001";
    std::shared_ptr<JetLink> link_;

    // Runs a statement through the driver: its result when it gives rows,
    // otherwise nothing, with the count of rows touched in `affected`.
    jobject RunPlain(JNIEnv* env, const Bridge& b, const String& sql, const std::vector<uint8_t>& params,
                     bool withParams, bool changesTables, int64_t& affected) {
        jbyteArray bound = withParams ? ToJavaBytes(env, params) : nullptr;
        jobject result = env->CallObjectMethod(link_->link.get(), b.linkExecute, ToJava(env, sql), bound,
                                               changesTables ? JNI_TRUE : JNI_FALSE);
        Check(env);
        if (env->CallBooleanMethod(result, b.resultHasRows)) return result;
        affected = env->CallLongMethod(result, b.resultCount);
        Check(env);
        return nullptr;
    }

    void RequireOpen() const {
        if (!link_->open) throw ProviderFailure({{0, u"08003", u"the connection to the Access file is not open"}});
    }

    // The restriction of one criterion, or nothing.
    static const Variant* Criterion(const std::vector<Variant>& c, size_t i) {
        if (i >= c.size() || c[i].IsEmpty() || c[i].IsNull() || c[i].ToString().empty()) return nullptr;
        return &c[i];
    }

    FactRows Facts(jmethodID Bridge::*method, const Variant* table) {
        JNIEnv* env = Env();
        const Bridge& b = Classes(env);
        LocalFrame frame(env);
        jbyteArray bytes;
        if (method == &Bridge::linkTables || method == &Bridge::linkRelationships) {
            bytes = static_cast<jbyteArray>(env->CallObjectMethod(link_->link.get(), b.*method));
        } else {
            jstring only = table ? ToJava(env, table->ToString()) : nullptr;
            bytes = static_cast<jbyteArray>(env->CallObjectMethod(link_->link.get(), b.*method, only));
        }
        Check(env);
        return DecodeFacts(FromJavaBytes(env, bytes));
    }
};

} // namespace

std::shared_ptr<Backend> MakeJetBackend() { return std::make_shared<JetBackend>(); }

} // namespace detail

namespace {

// A failure of a file routine, as the catalog object would raise it.
[[noreturn]] void RaiseFileFailure(const detail::ProviderFailure& f) {
    throw DbError(kProviderFailure, u"ADOX.Catalog", f.Description());
}

} // namespace

void CreateJetDatabase(const String& connectionText) {
    try {
        JetText t = ParseJetText(connectionText);
        if (t.path.empty())
            throw detail::ProviderFailure({{0, u"HY000", u"the connection text names no file (Data Source is empty)"}});
        if (!t.engineType.empty() && t.engineType != u"5")
            throw detail::ProviderFailure(
                {{0, u"HY000", u"only Jet 4 files (Engine Type 5) can be made; Engine Type " + t.engineType + u" was asked for"}});
        JNIEnv* env = detail::jet::Env();
        const detail::jet::Bridge& b = detail::jet::Classes(env);
        detail::jet::LocalFrame frame(env);
        env->CallStaticVoidMethod(b.bridge, b.create, detail::jet::ToJava(env, t.path));
        detail::jet::Check(env);
    } catch (const detail::ProviderFailure& f) {
        RaiseFileFailure(f);
    }
}

bool JetFileInUse(StringView path) {
    try {
        JNIEnv* env = detail::jet::Env();
        const detail::jet::Bridge& b = detail::jet::Classes(env);
        detail::jet::LocalFrame frame(env);
        String p = JetDataSource(u"Data Source=" + String(path));
        jboolean used = env->CallStaticBooleanMethod(b.bridge, b.inUse, detail::jet::ToJava(env, p));
        detail::jet::Check(env);
        return used == JNI_TRUE;
    } catch (const detail::ProviderFailure&) {
        // Without a JVM nothing of this process can hold the file.
        return false;
    }
}

void ReleaseJetFile(StringView path) {
    try {
        JNIEnv* env = detail::jet::Env();
        const detail::jet::Bridge& b = detail::jet::Classes(env);
        detail::jet::LocalFrame frame(env);
        String p = JetDataSource(u"Data Source=" + String(path));
        env->CallStaticVoidMethod(b.bridge, b.release, detail::jet::ToJava(env, p));
        detail::jet::Check(env);
    } catch (const detail::ProviderFailure&) {
        // Nothing kept where no JVM runs.
    }
}

#else

namespace detail {

namespace {

[[noreturn]] void Unavailable() { throw ProviderFailure({{0, u"HY000", jet::UnavailableReason()}}); }

// This build has no Access provider: every connection is refused with the
// reason recorded when the library was configured.
class JetBackend final : public Backend {
public:
    void Open(const String&, int32_t) override { Unavailable(); }
    void Close() override {}
    bool IsOpen() const override { return false; }
    std::unique_ptr<Cursor> Execute(const String&, const std::vector<Ref<Parameter>>&, int64_t&, int32_t) override {
        Unavailable();
    }
    Ref<Recordset> OpenSchema(int32_t, const std::vector<Variant>&) override { Unavailable(); }
};

} // namespace

std::shared_ptr<Backend> MakeJetBackend() { return std::make_shared<JetBackend>(); }

} // namespace detail

void CreateJetDatabase(const String&) {
    throw DbError(kProviderFailure, u"ADOX.Catalog", detail::jet::UnavailableReason());
}

bool JetFileInUse(StringView) { return false; }

void ReleaseJetFile(StringView) {}

#endif

} // namespace zolsdk::ado
