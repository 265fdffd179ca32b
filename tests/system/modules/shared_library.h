// SPDX-License-Identifier: Apache-2.0
// A shared library that is loaded while the program runs.
#pragma once

#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace sarn_test {

/// Loads on construction, unloads on destruction.
class SharedLibrary {
public:
    explicit SharedLibrary(const std::string& path);
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;
    ~SharedLibrary();

    /// The address of an exported function.
    template <class Function>
    Function find(const char* name) const {
        return reinterpret_cast<Function>(findAddress(name));
    }

private:
#ifdef _WIN32
    HMODULE m_handle;
#else
    void* m_handle;
#endif

    void* findAddress(const char* name) const;
};

#ifdef _WIN32

inline SharedLibrary::SharedLibrary(const std::string& path) : m_handle(LoadLibraryA(path.c_str())) {
    if (!m_handle)
        throw std::runtime_error("cannot load " + path);
}

inline SharedLibrary::~SharedLibrary() {
    FreeLibrary(m_handle);
}

inline void* SharedLibrary::findAddress(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(m_handle, name));
}

#else

inline SharedLibrary::SharedLibrary(const std::string& path) : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!m_handle)
        throw std::runtime_error(dlerror());
}

inline SharedLibrary::~SharedLibrary() {
    dlclose(m_handle);
}

inline void* SharedLibrary::findAddress(const char* name) const {
    return dlsym(m_handle, name);
}

#endif

} // namespace sarn_test
