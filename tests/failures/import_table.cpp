// SPDX-License-Identifier: Apache-2.0
#include "failures/import_table.h"

#include <cstring>
#include <stdexcept>

#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

namespace sarn_test {

namespace {

using Visitor = std::function<void(const char* name, void** address)>;

#if defined(__x86_64__)
constexpr unsigned long callEntry = R_X86_64_JUMP_SLOT;
constexpr unsigned long addressEntry = R_X86_64_GLOB_DAT;
#elif defined(__aarch64__)
constexpr unsigned long callEntry = R_AARCH64_JUMP_SLOT;
constexpr unsigned long addressEntry = R_AARCH64_GLOB_DAT;
#else
#error "The relocations of this processor are not known."
#endif

/// Tables in the dynamic section of a loaded library.
struct Tables {
    const ElfW(Sym) * symbols = nullptr;
    const char* names = nullptr;
    const ElfW(Rela) * calls = nullptr;
    std::size_t callsSize = 0;
    const ElfW(Rela) * addresses = nullptr;
    std::size_t addressesSize = 0;
};

template <class T>
T toPointer(ElfW(Addr) address) {
    return reinterpret_cast<T>(address); // NOLINT(performance-no-int-to-ptr): ELF stores addresses as numbers
}

Tables readTables(const link_map& library) {
    Tables tables;
    for (const ElfW(Dyn)* entry = library.l_ld; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_SYMTAB)
            tables.symbols = toPointer<const ElfW(Sym)*>(entry->d_un.d_ptr);
        else if (entry->d_tag == DT_STRTAB)
            tables.names = toPointer<const char*>(entry->d_un.d_ptr);
        else if (entry->d_tag == DT_JMPREL)
            tables.calls = toPointer<const ElfW(Rela)*>(entry->d_un.d_ptr);
        else if (entry->d_tag == DT_PLTRELSZ)
            tables.callsSize = entry->d_un.d_val;
        else if (entry->d_tag == DT_RELA)
            tables.addresses = toPointer<const ElfW(Rela)*>(entry->d_un.d_ptr);
        else if (entry->d_tag == DT_RELASZ)
            tables.addressesSize = entry->d_un.d_val;
    }
    return tables;
}

/// The tables are read-only once a library is loaded.
void makeWritable(void* address) {
    const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto page = reinterpret_cast<std::uintptr_t>(address) / pageSize * pageSize;
    if (::mprotect(toPointer<void*>(page), pageSize, PROT_READ | PROT_WRITE) != 0)
        throw std::runtime_error("the table of imports cannot be made writable");
}

void visitEntries(const link_map& library, const Tables& tables, const ElfW(Rela) * entries, std::size_t size,
                  const Visitor& visit) {
    for (std::size_t i = 0; i < size / sizeof *entries; ++i) {
        const unsigned long type = ELF64_R_TYPE(entries[i].r_info);
        if (type != callEntry && type != addressEntry)
            continue;
        const ElfW(Sym)& symbol = tables.symbols[ELF64_R_SYM(entries[i].r_info)];
        if (ELF64_ST_TYPE(symbol.st_info) == STT_OBJECT)
            continue;
        void** const address = toPointer<void**>(library.l_addr + entries[i].r_offset);
        makeWritable(address);
        visit(tables.names + symbol.st_name, address);
    }
}

} // namespace

void visitImports(const std::string& library, const Visitor& visit) {
    for (const link_map* loaded = _r_debug.r_map; loaded; loaded = loaded->l_next) {
        const char* const slash = std::strrchr(loaded->l_name, '/');
        const std::string name = slash ? slash + 1 : loaded->l_name;
        if (name.compare(0, library.size(), library) != 0)
            continue;
        const Tables tables = readTables(*loaded);
        visitEntries(*loaded, tables, tables.calls, tables.callsSize, visit);
        visitEntries(*loaded, tables, tables.addresses, tables.addressesSize, visit);
        return;
    }
    throw std::runtime_error("not loaded: " + library);
}

} // namespace sarn_test
