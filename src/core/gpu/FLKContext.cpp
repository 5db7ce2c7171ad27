#include "core/gpu/FLKContext.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "core/platform/FLKLog.h"

struct FLKContext::Native {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface draw = EGL_NO_SURFACE;
    EGLSurface read = EGL_NO_SURFACE;
};

namespace {
thread_local FLKContext* tCurrentContext = nullptr;

struct ReleasedObject {
    FLKContext::ObjectKind kind;
    unsigned int name;
};
// Never destroyed: decoder threads may still release textures while the
// process exits, after static destructors have run.
std::mutex& gReleasedMutex = *new std::mutex;
std::vector<ReleasedObject>& gReleasedObjects = *new std::vector<ReleasedObject>;  // guarded by gReleasedMutex

struct SurfacelessDisplay {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLConfig config = nullptr;
    std::string error;
};

bool hasExtension(const char* list, const char* name) {
    if (!list) return false;
    size_t length = std::strlen(name);
    for (const char* p = std::strstr(list, name); p; p = std::strstr(p + length, name)) {
        bool startOK = p == list || p[-1] == ' ';
        bool endOK = p[length] == ' ' || p[length] == '\0';
        if (startOK && endOK) return true;
    }
    return false;
}

std::string eglErrorText(const char* what) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "%s failed (EGL error 0x%04x).", what, static_cast<unsigned>(eglGetError()));
    return buffer;
}

std::mutex gPlatformMutex;
std::optional<FLKContext::NativePlatform> gPlatform;  // guarded by gPlatformMutex
bool gDisplayOpened = false;                         // guarded by gPlatformMutex

SurfacelessDisplay openDisplay() {
    SurfacelessDisplay result;
    {
        std::lock_guard lock(gPlatformMutex);
        gDisplayOpened = true;
        if (gPlatform) {
            result.display = static_cast<EGLDisplay>(gPlatform->display);
            result.config = static_cast<EGLConfig>(gPlatform->config);
            return result;
        }
    }
    const char* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (hasExtension(clientExtensions, "EGL_MESA_platform_surfaceless") &&
        hasExtension(clientExtensions, "EGL_EXT_platform_base")) {
        result.display = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    }
    if (result.display == EGL_NO_DISPLAY) result.display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    if (result.display == EGL_NO_DISPLAY) {
        result.error = "No EGL display is available.";
        return result;
    }
    EGLint major = 0, minor = 0;
    if (!eglInitialize(result.display, &major, &minor)) {
        result.error = eglErrorText("eglInitialize");
        result.display = EGL_NO_DISPLAY;
        return result;
    }
    // Surfaceless displays only list configs when a pbuffer surface type is asked for.
    const EGLint attributes[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                 EGL_RED_SIZE,     8,               EGL_GREEN_SIZE,      8,
                                 EGL_BLUE_SIZE,    8,               EGL_ALPHA_SIZE,      8,
                                 EGL_NONE};
    EGLint count = 0;
    if (!eglChooseConfig(result.display, attributes, &result.config, 1, &count) || count < 1) {
        result.error = "No EGL configuration supports desktop OpenGL.";
        result.display = EGL_NO_DISPLAY;
    }
    return result;
}

const SurfacelessDisplay& sharedDisplay() {
    static const SurfacelessDisplay display = openDisplay();
    return display;
}

void deleteObject(const ReleasedObject& object) {
    switch (object.kind) {
        case FLKContext::ObjectKind::texture: glDeleteTextures(1, &object.name); break;
        case FLKContext::ObjectKind::buffer: glDeleteBuffers(1, &object.name); break;
        case FLKContext::ObjectKind::sampler: glDeleteSamplers(1, &object.name); break;
        case FLKContext::ObjectKind::program: glDeleteProgram(object.name); break;
    }
}

std::string glString(GLenum name) {
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return text ? text : "";
}
}  // namespace

FLKContext::FLKContext() : native_(std::make_unique<Native>()) {}

FLKContext::~FLKContext() {
    if (sampler_) releaseObject(ObjectKind::sampler, sampler_);
    if (ownsNative_ && native_->context != EGL_NO_CONTEXT) {
        if (tCurrentContext == this) doneCurrentNow();
        eglDestroyContext(native_->display, native_->context);
    }
}

std::shared_ptr<FLKContext> FLKContext::sharedContext() {
    // Never destroyed: textures may still be released while the process exits.
    static auto* shared = new std::shared_ptr<FLKContext>(createOwned({720, 720}, nullptr));
    return *shared;
}

std::shared_ptr<FLKContext> FLKContext::contextWithSize(FLKSize size) {
    auto shared = sharedContext();
    if (!shared->isValid()) {
        std::shared_ptr<FLKContext> context(new FLKContext());
        context->errorDescription_ = shared->errorDescription();
        return context;
    }
    auto context = createOwned(size, shared.get());
    if (context->isValid()) {
        flk::log("%s line %d $ Offscreen rendering with device: %s", __func__, __LINE__,
                 context->deviceName().c_str());
    }
    return context;
}

std::shared_ptr<FLKContext> FLKContext::createOwned(FLKSize size, const FLKContext* shareWith) {
    std::shared_ptr<FLKContext> context(new FLKContext());
    context->size_ = size;
    const SurfacelessDisplay& display = sharedDisplay();
    if (display.display == EGL_NO_DISPLAY) {
        context->errorDescription_ = display.error;
        return context;
    }
    if (!eglBindAPI(EGL_OPENGL_API)) {
        context->errorDescription_ = eglErrorText("eglBindAPI(EGL_OPENGL_API)");
        return context;
    }
    const EGLint attributes[] = {EGL_CONTEXT_MAJOR_VERSION, 4, EGL_CONTEXT_MINOR_VERSION, 5,
                                 EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    EGLContext share = shareWith ? shareWith->native_->context : EGL_NO_CONTEXT;
    if (!shareWith) {
        std::lock_guard lock(gPlatformMutex);
        if (gPlatform) share = static_cast<EGLContext>(gPlatform->shareContext);
    }
    EGLContext handle = eglCreateContext(display.display, display.config, share, attributes);
    if (handle == EGL_NO_CONTEXT) {
        context->errorDescription_ = "OpenGL 4.5 not supported. " + eglErrorText("eglCreateContext");
        return context;
    }
    context->native_->display = display.display;
    context->native_->context = handle;
    context->valid_ = true;
    context->readDeviceStrings();
    return context;
}

std::shared_ptr<FLKContext> FLKContext::adoptCurrentContext(FLKSize size, std::function<bool()> makeCurrent,
                                                            std::function<void()> doneCurrent) {
    std::shared_ptr<FLKContext> context(new FLKContext());
    context->size_ = size;
    context->ownsNative_ = false;
    context->externalMakeCurrent_ = std::move(makeCurrent);
    context->externalDoneCurrent_ = std::move(doneCurrent);
    if (!context->externalMakeCurrent_) {
        context->native_->display = eglGetCurrentDisplay();
        context->native_->context = eglGetCurrentContext();
        context->native_->draw = eglGetCurrentSurface(EGL_DRAW);
        context->native_->read = eglGetCurrentSurface(EGL_READ);
        if (context->native_->context == EGL_NO_CONTEXT) {
            context->errorDescription_ = "No current EGL context to adopt.";
            return context;
        }
    }
    context->valid_ = true;
    context->readDeviceStrings();  // the adopted context is current on this thread now
    return context;
}

void FLKContext::readDeviceStrings() {
    Scope scope(*this);
    if (!scope.isCurrent()) {
        valid_ = false;
        errorDescription_ = eglErrorText("eglMakeCurrent");
        return;
    }
    GLint major = 0, minor = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    glGetIntegerv(GL_MINOR_VERSION, &minor);
    deviceName_ = glString(GL_RENDERER);
    versionString_ = glString(GL_VERSION);
    if (major < 4 || (major == 4 && minor < 5)) {
        valid_ = false;
        errorDescription_ = "OpenGL 4.5 not supported. The driver offers " + versionString_ + ".";
    }
}

bool FLKContext::useNativePlatform(const NativePlatform& platform) {
    std::lock_guard lock(gPlatformMutex);
    if (gDisplayOpened || !platform.display || !platform.config) return false;
    gPlatform = platform;
    return true;
}

bool FLKContext::isGPUSupported(std::string* reason) {
    auto shared = sharedContext();
    if (!shared->isValid() && reason) *reason = shared->errorDescription();
    return shared->isValid();
}

FLKSize FLKContext::size() const {
    std::lock_guard lock(sizeMutex_);
    return size_;
}

void FLKContext::setSize(FLKSize size) {
    std::lock_guard lock(sizeMutex_);
    size_ = size;
}

FLKPoint FLKContext::gpuPointForPoint(FLKPoint p) const { return {p.x, size().height - p.y}; }

FLKRect FLKContext::gpuRectForRect(FLKRect r) const {
    return {r.origin.x, size().height - r.size.height - r.origin.y, r.size.width, r.size.height};
}

unsigned int FLKContext::samplerState() {
    std::lock_guard lock(currentMutex_);
    if (sampler_ == 0 && tCurrentContext) {
        glCreateSamplers(1, &sampler_);
        glSamplerParameteri(sampler_, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glSamplerParameteri(sampler_, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glSamplerParameteri(sampler_, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glSamplerParameteri(sampler_, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    return sampler_;
}

bool FLKContext::isCurrent() const { return tCurrentContext == this; }

FLKContext* FLKContext::current() { return tCurrentContext; }

bool FLKContext::makeCurrentNow() {
    if (externalMakeCurrent_) return externalMakeCurrent_();
    if (native_->context == EGL_NO_CONTEXT) return false;
    eglBindAPI(EGL_OPENGL_API);
    return eglMakeCurrent(native_->display, native_->draw, native_->read, native_->context) == EGL_TRUE;
}

void FLKContext::doneCurrentNow() {
    if (externalMakeCurrent_) {
        if (externalDoneCurrent_) externalDoneCurrent_();
        return;
    }
    eglMakeCurrent(native_->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

void FLKContext::releaseObject(ObjectKind kind, unsigned int name) {
    if (name == 0) return;
    if (tCurrentContext) {
        deleteObject({kind, name});
        return;
    }
    std::lock_guard lock(gReleasedMutex);
    gReleasedObjects.push_back({kind, name});
}

void FLKContext::drainReleasedObjects() {
    std::vector<ReleasedObject> objects;
    {
        std::lock_guard lock(gReleasedMutex);
        objects.swap(gReleasedObjects);
    }
    for (const auto& object : objects) deleteObject(object);
}

FLKContext::Scope::Scope(FLKContext& context) : context_(context) {
    context_.currentMutex_.lock();
    previous_ = tCurrentContext;
    if (previous_ == &context_) {
        current_ = true;
        return;
    }
    current_ = context_.makeCurrentNow();
    if (current_) {
        tCurrentContext = &context_;
        drainReleasedObjects();
    }
}

FLKContext::Scope::~Scope() {
    if (previous_ != &context_ && current_) {
        context_.doneCurrentNow();
        tCurrentContext = previous_;
        if (previous_) previous_->makeCurrentNow();
    }
    context_.currentMutex_.unlock();
}
