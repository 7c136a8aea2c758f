#include "platform/ado/jet/jvm.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <thread>

#include "support/split.hpp"

namespace zolsdk::ado::detail::jet {

String UnavailableReason() {
#if ZOLSDK_JET_AVAILABLE
    return {};
#else
    return u"the Access (Jet) provider is not part of this build: " + FromUtf8(ZOLSDK_JET_UNAVAILABLE_REASON);
#endif
}

#if ZOLSDK_JET_AVAILABLE

namespace {

[[noreturn]] void Fail(const String& text) { throw ProviderFailure({{0, u"HY000", text}}); }

using CreateVmFn = jint (*)(JavaVM**, void**, void*);
using CreatedVmsFn = jint (*)(JavaVM**, jsize, jsize*);

// The options of the embedded JVM. -Xrs leaves SIGINT, SIGTERM and the rest
// to the host program; the serial collector and two compiler threads keep
// the JVM's own threads few on a host that has its own work; no perf-data
// file is left in the temp folder by each process. The heap grows from a
// small start up to a limit that holds the driver's mirror of a large file.
// The provider's classes come from a shared archive made at build time
// when there is one (the JVM loads them as mapped memory: a faster start).
std::vector<std::string> VmOptions() {
    std::vector<std::string> o = {
        std::string("-Djava.class.path=") + ZOLSDK_JET_CLASSPATH,
        "-Xrs",
        "-XX:+UseSerialGC",
        "-XX:-UsePerfData",
        "-XX:TieredStopAtLevel=1",
        "-XX:CICompilerCount=1",
        "-Xss1m",
        "-Xms16m",
        "-Xmx1g",
        "-XX:ReservedCodeCacheSize=48m",
        // A shared archive that does not fit this JVM is left unused without a word.
        "-Xlog:disable",
        "-Djava.awt.headless=true",
        "-Dfile.encoding=UTF-8",
        // A library inside the driver's dependencies logs through an API
        // without a backend and would complain about it on stderr.
        "-Dlog4j2.loggerContextFactory=org.apache.logging.log4j.simple.SimpleLoggerContextFactory",
        "-Dorg.apache.logging.log4j.simplelog.StatusLogger.level=OFF",
    };
    if (const char* extra = std::getenv("ZOLSDK_JVM_OPTIONS"); extra && *extra)
        for (const String& item : Split(FromUtf8(extra), u" "))
            if (!item.empty()) o.push_back(ToUtf8(item));
    if (std::string archive = ZOLSDK_JET_CDS_ARCHIVE; !archive.empty() && ::access(archive.c_str(), R_OK) == 0) {
        o.push_back("-XX:SharedArchiveFile=" + archive);
        o.push_back("-Xshare:auto");
    }
    return o;
}

JavaVM* StartVm() {
    void* lib = ::dlopen(ZOLSDK_JET_JVM_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
    if (!lib) {
        const char* why = ::dlerror();
        Fail(u"cannot load the Java VM (" + FromUtf8(ZOLSDK_JET_JVM_LIBRARY) + u"): " + FromUtf8(why ? why : "unknown"));
    }
    auto created = reinterpret_cast<CreatedVmsFn>(::dlsym(lib, "JNI_GetCreatedJavaVMs"));
    auto create = reinterpret_cast<CreateVmFn>(::dlsym(lib, "JNI_CreateJavaVM"));
    if (!created || !create) Fail(u"the Java VM library " + FromUtf8(ZOLSDK_JET_JVM_LIBRARY) + u" has no invocation API");

    // A host that runs its own JVM already: the provider joins it.
    JavaVM* vm = nullptr;
    jsize count = 0;
    if (created(&vm, 1, &count) == JNI_OK && count > 0) return vm;

    // The JVM is created on a thread of its own, with the full default
    // stack: the process's first thread is a poor home for it. That thread
    // detaches and ends; callers attach themselves.
    std::vector<std::string> text = VmOptions();
    std::vector<JavaVMOption> options(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        options[i].optionString = text[i].data();
        options[i].extraInfo = nullptr;
    }
    JavaVMInitArgs args{};
    args.version = JNI_VERSION_1_8;
    args.nOptions = static_cast<jint>(options.size());
    args.options = options.data();
    args.ignoreUnrecognized = JNI_FALSE;
    jint rc = JNI_ERR;
    std::thread starter([&] {
        JNIEnv* env = nullptr;
        rc = create(&vm, reinterpret_cast<void**>(&env), &args);
        if (rc == JNI_OK) vm->DetachCurrentThread();
    });
    starter.join();
    if (rc != JNI_OK || !vm) Fail(u"the Java VM did not start (JNI error " + IntText(rc) + u")");
    return vm;
}

JavaVM* Vm() {
    static std::once_flag once;
    static JavaVM* vm = nullptr;
    static std::vector<ProviderError> failure;
    std::call_once(once, [] {
        try {
            vm = StartVm();
        } catch (const ProviderFailure& f) {
            failure = f.Errors();
        }
    });
    if (!vm) throw ProviderFailure(failure);
    return vm;
}

// Detaches the thread when it ends, if it was attached here.
struct Attachment {
    JavaVM* vm = nullptr;
    JNIEnv* env = nullptr;
    ~Attachment() {
        if (vm && env) vm->DetachCurrentThread();
    }
};

jclass GlobalClass(JNIEnv* env, const char* name) {
    jclass local = env->FindClass(name);
    Check(env);
    auto global = static_cast<jclass>(env->NewGlobalRef(local));
    env->DeleteLocalRef(local);
    return global;
}

jmethodID Method(JNIEnv* env, jclass cls, const char* name, const char* sig, bool isStatic = false) {
    jmethodID id = isStatic ? env->GetStaticMethodID(cls, name, sig) : env->GetMethodID(cls, name, sig);
    Check(env);
    return id;
}

} // namespace

JNIEnv* Env() {
    JavaVM* vm = Vm();
    thread_local Attachment attachment;
    if (attachment.env) return attachment.env;
    JNIEnv* env = nullptr;
    if (vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_8) == JNI_OK) return env; // a Java thread calling in
    if (vm->AttachCurrentThreadAsDaemon(reinterpret_cast<void**>(&env), nullptr) != JNI_OK)
        Fail(u"the thread could not join the Java VM");
    attachment.vm = vm;
    attachment.env = env;
    return env;
}

const Bridge& Classes(JNIEnv* env) {
    static std::once_flag once;
    static Bridge b;
    static std::vector<ProviderError> failure;
    std::call_once(once, [env] {
        try {
            Bridge c;
            c.string = GlobalClass(env, "java/lang/String");
            c.bridge = GlobalClass(env, "zolsdk/jet/JetBridge");
            c.link = GlobalClass(env, "zolsdk/jet/JetBridge$Link");
            c.result = GlobalClass(env, "zolsdk/jet/JetBridge$Result");
            c.describe = Method(env, c.bridge, "describe", "(Ljava/lang/Throwable;)[Ljava/lang/String;", true);
            c.open = Method(env, c.bridge, "open", "(Ljava/lang/String;Ljava/lang/String;)Lzolsdk/jet/JetBridge$Link;", true);
            c.create = Method(env, c.bridge, "create", "(Ljava/lang/String;)V", true);
            c.release = Method(env, c.bridge, "release", "(Ljava/lang/String;)V", true);
            c.inUse = Method(env, c.bridge, "inUse", "(Ljava/lang/String;)Z", true);
            c.linkClose = Method(env, c.link, "close", "()V");
            c.linkExecute = Method(env, c.link, "execute", "(Ljava/lang/String;[BZ)Lzolsdk/jet/JetBridge$Result;");
            c.linkCreateIndex =
                Method(env, c.link, "createIndex", "(Ljava/lang/String;Ljava/lang/String;Z[Ljava/lang/String;[Z)V");
            c.linkColumnType = Method(env, c.link, "columnType", "(Ljava/lang/String;Ljava/lang/String;)Ljava/lang/String;");
            c.linkSetRequired = Method(env, c.link, "setRequired", "(Ljava/lang/String;Ljava/lang/String;Z)V");
            c.linkTables = Method(env, c.link, "tables", "()[B");
            c.linkColumns = Method(env, c.link, "columns", "(Ljava/lang/String;)[B");
            c.linkIndexes = Method(env, c.link, "indexes", "(Ljava/lang/String;)[B");
            c.linkRelationships = Method(env, c.link, "relationships", "()[B");
            c.linkAddRows = Method(env, c.link, "addRows", "(Ljava/lang/String;[Ljava/lang/String;[B)J");
            c.linkSelect =
                Method(env, c.link, "select", "(Ljava/lang/String;[Ljava/lang/String;)Lzolsdk/jet/JetBridge$Result;");
            c.linkCountRows = Method(env, c.link, "countRows", "(Ljava/lang/String;)J");
            c.linkCreatePrimaryKey = Method(env, c.link, "createPrimaryKey",
                                            "(Ljava/lang/String;Ljava/lang/String;[Ljava/lang/String;[Z)V");
            c.linkIsJet3 = Method(env, c.link, "isJet3", "()Z");
            c.resultCount = Method(env, c.result, "count", "()J");
            c.resultHasRows = Method(env, c.result, "hasRows", "()Z");
            c.resultColumns = Method(env, c.result, "columns", "()[B");
            c.resultFetch = Method(env, c.result, "fetch", "(I)[B");
            c.resultClose = Method(env, c.result, "close", "()V");
            b = c;
        } catch (const ProviderFailure& f) {
            failure = f.Errors();
        }
    });
    if (!b.resultClose) {
        if (failure.empty()) failure.push_back({0, u"HY000", u"the provider's Java classes could not be loaded"});
        throw ProviderFailure(failure);
    }
    return b;
}

void Check(JNIEnv* env) {
    if (!env->ExceptionCheck()) return;
    jthrowable thrown = env->ExceptionOccurred();
    env->ExceptionClear();
    ProviderError e{0, u"HY000", u"Java failure"};
    // The Java half words its own failures; before its classes are found,
    // the exception's class name is all there is to say.
    static std::once_flag once;
    static jclass bridge = nullptr;
    static jmethodID describe = nullptr;
    std::call_once(once, [env] {
        jclass cls = env->FindClass("zolsdk/jet/JetBridge");
        if (cls) {
            bridge = static_cast<jclass>(env->NewGlobalRef(cls));
            describe = env->GetStaticMethodID(bridge, "describe", "(Ljava/lang/Throwable;)[Ljava/lang/String;");
        }
        if (env->ExceptionCheck()) env->ExceptionClear();
    });
    if (describe) {
        auto parts = static_cast<jobjectArray>(env->CallStaticObjectMethod(bridge, describe, thrown));
        if (!env->ExceptionCheck() && parts && env->GetArrayLength(parts) == 3) {
            auto state = static_cast<jstring>(env->GetObjectArrayElement(parts, 0));
            auto code = static_cast<jstring>(env->GetObjectArrayElement(parts, 1));
            auto text = static_cast<jstring>(env->GetObjectArrayElement(parts, 2));
            e.sqlState = FromJava(env, state);
            if (e.sqlState.empty()) e.sqlState = u"HY000";
            e.native = static_cast<int32_t>(std::stol(ToUtf8(FromJava(env, code))));
            e.message = FromJava(env, text);
        }
        if (env->ExceptionCheck()) env->ExceptionClear();
    } else {
        jclass cls = env->GetObjectClass(thrown);
        jmethodID getName = env->GetMethodID(env->FindClass("java/lang/Class"), "getName", "()Ljava/lang/String;");
        if (cls && getName) e.message = FromJava(env, static_cast<jstring>(env->CallObjectMethod(cls, getName)));
        if (env->ExceptionCheck()) env->ExceptionClear();
    }
    env->DeleteLocalRef(thrown);
    throw ProviderFailure({e});
}

LocalFrame::LocalFrame(JNIEnv* env, jint capacity) : env_(env) {
    if (env_->PushLocalFrame(capacity) != 0) {
        env_->ExceptionClear();
        Fail(u"out of memory in the Java VM");
    }
}

LocalFrame::~LocalFrame() { env_->PopLocalFrame(nullptr); }

Global::Global(JNIEnv* env, jobject local) : obj_(local ? env->NewGlobalRef(local) : nullptr) {}

Global::~Global() { reset(); }

Global& Global::operator=(Global&& o) noexcept {
    if (this != &o) {
        reset();
        obj_ = o.obj_;
        o.obj_ = nullptr;
    }
    return *this;
}

void Global::reset() {
    if (!obj_) return;
    try {
        Env()->DeleteGlobalRef(obj_);
    } catch (...) {
        // A JVM that is gone has no references to free.
    }
    obj_ = nullptr;
}

jstring ToJava(JNIEnv* env, StringView text) {
    jstring s = env->NewString(reinterpret_cast<const jchar*>(text.data()), static_cast<jsize>(text.size()));
    Check(env);
    return s;
}

String FromJava(JNIEnv* env, jstring text) {
    if (!text) return {};
    jsize n = env->GetStringLength(text);
    String out(static_cast<size_t>(n), u'\0');
    env->GetStringRegion(text, 0, n, reinterpret_cast<jchar*>(out.data()));
    return out;
}

jbyteArray ToJavaBytes(JNIEnv* env, const std::vector<uint8_t>& bytes) {
    jbyteArray a = env->NewByteArray(static_cast<jsize>(bytes.size()));
    Check(env);
    if (!bytes.empty())
        env->SetByteArrayRegion(a, 0, static_cast<jsize>(bytes.size()), reinterpret_cast<const jbyte*>(bytes.data()));
    return a;
}

std::vector<uint8_t> FromJavaBytes(JNIEnv* env, jbyteArray bytes) {
    if (!bytes) return {};
    jsize n = env->GetArrayLength(bytes);
    std::vector<uint8_t> out(static_cast<size_t>(n));
    if (n > 0) env->GetByteArrayRegion(bytes, 0, n, reinterpret_cast<jbyte*>(out.data()));
    return out;
}

#endif

} // namespace zolsdk::ado::detail::jet
