// SPDX-License-Identifier: Apache-2.0
// Makes calls of a library on Windows fail, or looks at them.
#pragma once

#include <cstdlib>
#include <cstring>

#include <windows.h>

namespace sarn_test {

/// While it lives, the calls that ul.dll makes of an imported function go to another one of the same type.
class ReplacedImport {
public:
    template <class Function>
    ReplacedImport(const char* name, Function* replacement) : m_address(find(name)), m_original(*m_address) {
        store(reinterpret_cast<ULONG_PTR>(replacement));
    }
    ReplacedImport(const ReplacedImport&) = delete;
    ReplacedImport& operator=(const ReplacedImport&) = delete;
    ~ReplacedImport() { store(m_original); }

private:
    /// Ends the process if ul.dll does not import the function.
    static ULONG_PTR* find(const char* name) {
        auto* const base = reinterpret_cast<unsigned char*>(::GetModuleHandleW(L"ul.dll"));
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
        const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
        const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
        for (auto* dll = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); dll->Name != 0; ++dll) {
            const auto* entry = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + dll->OriginalFirstThunk);
            auto* address = reinterpret_cast<IMAGE_THUNK_DATA*>(base + dll->FirstThunk);
            for (; entry->u1.AddressOfData != 0; ++entry, ++address) {
                const auto* const imported =
                    reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + entry->u1.AddressOfData);
                if (!IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal) && std::strcmp(imported->Name, name) == 0)
                    return &address->u1.Function;
            }
        }
        std::abort();
    }

    void store(ULONG_PTR function) const {
        DWORD protection = 0;
        ::VirtualProtect(m_address, sizeof *m_address, PAGE_READWRITE, &protection);
        *m_address = function;
        ::VirtualProtect(m_address, sizeof *m_address, protection, &protection);
    }

    ULONG_PTR* const m_address;
    const ULONG_PTR m_original;
};

} // namespace sarn_test
