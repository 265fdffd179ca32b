// SPDX-License-Identifier: Apache-2.0
// The tables of imported addresses of loaded ELF libraries.
#include "failures/imported_calls.h"

#include <cstring>
#include <map>
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

template <class T>
T toPointer(ElfW(Addr) address) {
    return reinterpret_cast<T>(address); // NOLINT(performance-no-int-to-ptr): ELF stores addresses as numbers
}

/// The dynamic section of a loaded library by its tags.
using Section = std::map<ElfW(Sxword), ElfW(Addr)>;

Section readSection(const link_map& library) {
    Section section;
    for (const ElfW(Dyn)* entry = library.l_ld; entry->d_tag != DT_NULL; ++entry)
        section[entry->d_tag] = entry->d_un.d_ptr;
    return section;
}

/// The loader makes the tables read-only.
void makeWritable(void* address) {
    const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto page = reinterpret_cast<std::uintptr_t>(address) / pageSize * pageSize;
    if (::mprotect(toPointer<void*>(page), pageSize, PROT_READ | PROT_WRITE) != 0)
        throw std::runtime_error("the table of imports cannot be made writable");
}

void visitEntries(const link_map& library, Section& section, int table, int tableSize, const Visitor& visit) {
    const auto* const entries = toPointer<const ElfW(Rela)*>(section[table]);
    const auto* const symbols = toPointer<const ElfW(Sym)*>(section[DT_SYMTAB]);
    for (std::size_t i = 0; i < section[tableSize] / sizeof *entries; ++i) {
        const unsigned long type = ELF64_R_TYPE(entries[i].r_info);
        const ElfW(Sym)& symbol = symbols[ELF64_R_SYM(entries[i].r_info)];
        if ((type != callEntry && type != addressEntry) || ELF64_ST_TYPE(symbol.st_info) == STT_OBJECT)
            continue;
        void** const address = toPointer<void**>(library.l_addr + entries[i].r_offset);
        makeWritable(address);
        visit(toPointer<const char*>(section[DT_STRTAB]) + symbol.st_name, address);
    }
}

} // namespace

void visitImports(const std::string& library, const Visitor& visit) {
    for (const link_map* loaded = _r_debug.r_map; loaded; loaded = loaded->l_next) {
        const char* const slash = std::strrchr(loaded->l_name, '/');
        const std::string name = slash ? slash + 1 : loaded->l_name;
        if (name.compare(0, library.size(), library) != 0)
            continue;
        Section section = readSection(*loaded);
        visitEntries(*loaded, section, DT_JMPREL, DT_PLTRELSZ, visit);
        visitEntries(*loaded, section, DT_RELA, DT_RELASZ, visit);
        return;
    }
    throw std::runtime_error("not loaded: " + library);
}

} // namespace sarn_test
