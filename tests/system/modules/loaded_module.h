// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/modules/module.h"

#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace sarn_test {

/// While it lives, a module is loaded.
class LoadedModule {
public:
#ifdef _WIN32
    explicit LoadedModule(const std::string& path) : m_handle(LoadLibraryA(path.c_str())) {
        checkLoaded(path);
    }
    ~LoadedModule() {
        FreeLibrary(m_handle);
    }
#else
    explicit LoadedModule(const std::string& path) : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        checkLoaded(path);
    }
    ~LoadedModule() {
        dlclose(m_handle);
    }
#endif
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    const Module& get() const {
#ifdef _WIN32
        const auto address = reinterpret_cast<void*>(GetProcAddress(m_handle, "getModule"));
#else
        void* const address = dlsym(m_handle, "getModule");
#endif
        return *reinterpret_cast<decltype(&getModule)>(address)();
    }

private:
    void checkLoaded(const std::string& path) const {
        if (!m_handle)
            throw std::runtime_error("cannot load " + path);
    }

#ifdef _WIN32
    HMODULE m_handle;
#else
    void* m_handle;
#endif
};

} // namespace sarn_test
