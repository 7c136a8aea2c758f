#pragma once
// The JVM that runs the Access provider's Java half. It is started once per
// process, on first use, from the libjvm recorded when the library was
// configured (opened with dlopen: the library does not link against Java).
// Threads attach themselves the first time they call in and detach when
// they end.
//
// Every failure here, a JVM that cannot start included, is a
// ProviderFailure carrying the Java side's message.
#include <cstdint>
#include <vector>

#include "platform/ado/backend.hpp"
#include "platform/ado/jet/jet_config.h"

#if ZOLSDK_JET_AVAILABLE
#include <jni.h>
#endif

namespace zolsdk::ado::detail::jet {

// Why this build has no Access provider ("" when it has one).
String UnavailableReason();

#if ZOLSDK_JET_AVAILABLE

// The calling thread's environment; starts the JVM and attaches the thread
// as needed.
JNIEnv* Env();

// The classes and methods of the Java half, looked up once.
struct Bridge {
    jclass bridge = nullptr, link = nullptr, result = nullptr, string = nullptr;
    jmethodID open = nullptr, create = nullptr, release = nullptr, inUse = nullptr, describe = nullptr;
    jmethodID linkClose = nullptr, linkExecute = nullptr, linkCreateIndex = nullptr, linkColumnType = nullptr,
              linkSetRequired = nullptr, linkTables = nullptr, linkColumns = nullptr, linkIndexes = nullptr,
              linkRelationships = nullptr, linkAddRows = nullptr, linkSelect = nullptr, linkCountRows = nullptr,
              linkCreatePrimaryKey = nullptr, linkIsJet3 = nullptr;
    jmethodID resultCount = nullptr, resultHasRows = nullptr, resultColumns = nullptr, resultFetch = nullptr,
              resultClose = nullptr;
};
const Bridge& Classes(JNIEnv* env);

// Raises the pending Java exception, if any, as a ProviderFailure.
void Check(JNIEnv* env);

// Local references made inside a scope are freed when it ends.
class LocalFrame {
public:
    explicit LocalFrame(JNIEnv* env, jint capacity = 32);
    ~LocalFrame();
    LocalFrame(const LocalFrame&) = delete;
    LocalFrame& operator=(const LocalFrame&) = delete;

private:
    JNIEnv* env_;
};

// A global reference to a Java object, deleted when the last copy goes.
class Global {
public:
    Global() = default;
    Global(JNIEnv* env, jobject local);
    ~Global();
    Global(const Global&) = delete;
    Global& operator=(const Global&) = delete;
    Global(Global&& o) noexcept : obj_(o.obj_) { o.obj_ = nullptr; }
    Global& operator=(Global&& o) noexcept;
    jobject get() const { return obj_; }
    explicit operator bool() const { return obj_ != nullptr; }
    void reset();

private:
    jobject obj_ = nullptr;
};

jstring ToJava(JNIEnv* env, StringView text);
String FromJava(JNIEnv* env, jstring text);
jbyteArray ToJavaBytes(JNIEnv* env, const std::vector<uint8_t>& bytes);
std::vector<uint8_t> FromJavaBytes(JNIEnv* env, jbyteArray bytes);

#endif

} // namespace zolsdk::ado::detail::jet
