#include "doctor/elf_file.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <string_view>

namespace doctor {

namespace {

// A file in memory, whose every part is asked for with its size: it may be cut short or lie.
class Image {
public:
    explicit Image(const std::string& path) {
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        struct stat status {};
        if (file < 0 || fstat(file, &status) != 0) {
            error_ = errno;
        } else if (S_ISREG(status.st_mode) && status.st_size > 0) {
            void* begin = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE, file, 0);
            if (begin != MAP_FAILED) {
                bytes_ = {static_cast<const char*>(begin), static_cast<std::size_t>(status.st_size)};
            }
        }
        if (file >= 0) {
            close(file);
        }
    }
    ~Image() {
        if (!bytes_.empty()) {
            munmap(const_cast<char*>(bytes_.data()), bytes_.size());
        }
    }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    int error() const { return error_; }
    std::string_view bytes() const { return bytes_; }
    // A copy of what stands at `offset`; all zero beyond the end.
    template <typename Part>
    Part at(std::uint64_t offset) const {
        Part part{};
        if (offset <= bytes_.size() && sizeof part <= bytes_.size() - offset) {
            std::memcpy(&part, bytes_.data() + offset, sizeof part);
        }
        return part;
    }
    std::string text(std::uint64_t offset) const {
        if (offset >= bytes_.size()) {
            return {};
        }
        const std::string_view rest = bytes_.substr(offset);
        return std::string(rest.substr(0, rest.find('\0')));
    }

private:
    std::string_view bytes_;
    int error_ = 0;
};

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Dynamic = ElfW(Dyn);
using Symbol = ElfW(Sym);

// More than any library has, so that a damaged one comes to an end.
constexpr std::size_t kMostEntries = 100000;

class Reader {
public:
    Reader(const Image& image, ElfFile& file) : image_(image), file_(file), header_(image.at<Header>(0)) {}

    void read() {
        for (std::size_t number = 0; number < header_.e_phnum; ++number) {
            const auto segment = image_.at<Segment>(header_.e_phoff + number * sizeof(Segment));
            if (segment.p_type == PT_LOAD) {
                loads_.push_back(segment);
            } else if (segment.p_type == PT_DYNAMIC) {
                dynamic_ = segment;
            }
        }
        std::vector<Dynamic> named;
        for (std::size_t place = 0; place < dynamic_.p_filesz / sizeof(Dynamic); ++place) {
            const auto entry = image_.at<Dynamic>(dynamic_.p_offset + place * sizeof(Dynamic));
            if (entry.d_tag == DT_NULL) {
                break;
            }
            values_[entry.d_tag] = entry.d_un.d_val;
            named.push_back(entry);
        }
        strings_ = fileOffset(values_[DT_STRTAB]);
        for (const Dynamic& entry : named) {
            if (entry.d_tag == DT_NEEDED) {
                file_.needed.push_back(string(entry.d_un.d_val));
            } else if (entry.d_tag == DT_RPATH) {
                file_.rpath = string(entry.d_un.d_val);
            } else if (entry.d_tag == DT_RUNPATH) {
                file_.runpath = string(entry.d_un.d_val);
            }
        }
        readVersions();
        readFunctions();
    }

private:
    std::uint64_t fileOffset(std::uint64_t address) const {
        for (const Segment& load : loads_) {
            if (address >= load.p_vaddr && address - load.p_vaddr < load.p_filesz) {
                return address - load.p_vaddr + load.p_offset;
            }
        }
        return image_.bytes().size();
    }
    std::string string(std::uint64_t place) const { return image_.text(strings_ + place); }

    void readVersions() {
        std::uint64_t offset = fileOffset(values_[DT_VERNEED]);
        for (std::uint64_t count = values_[DT_VERNEED] != 0 ? values_[DT_VERNEEDNUM] : 0; count > 0; --count) {
            const auto need = image_.at<ElfW(Verneed)>(offset);
            std::uint64_t item = offset + need.vn_aux;
            for (unsigned left = need.vn_cnt; left > 0; --left) {
                const auto version = image_.at<ElfW(Vernaux)>(item);
                // One that is weak may be missing.
                if ((version.vna_flags & VER_FLG_WEAK) == 0) {
                    file_.neededVersions.push_back({string(need.vn_file), string(version.vna_name)});
                }
                item += version.vna_next;
            }
            if (need.vn_next == 0) {
                break;
            }
            offset += need.vn_next;
        }
        offset = fileOffset(values_[DT_VERDEF]);
        for (std::uint64_t count = values_[DT_VERDEF] != 0 ? values_[DT_VERDEFNUM] : 0; count > 0; --count) {
            const auto definition = image_.at<ElfW(Verdef)>(offset);
            file_.versions.insert(string(image_.at<ElfW(Verdaux)>(offset + definition.vd_aux).vda_name));
            if (definition.vd_next == 0) {
                break;
            }
            offset += definition.vd_next;
        }
    }

    // The table of symbols tells no size of its own; the names stand behind it in what linkers write.
    void readFunctions() {
        const std::uint64_t begin = fileOffset(values_[DT_SYMTAB]);
        const std::uint64_t end = strings_ > begin ? strings_ : image_.bytes().size();
        const std::size_t count = std::min<std::uint64_t>((end - begin) / sizeof(Symbol), kMostEntries);
        for (std::size_t number = 0; number < count; ++number) {
            const auto symbol = image_.at<Symbol>(begin + number * sizeof(Symbol));
            if (symbol.st_shndx == SHN_UNDEF || symbol.st_name >= values_[DT_STRSZ]) {
                continue;
            }
            const std::string name = string(symbol.st_name);
            if (name.starts_with("SQL") || name.starts_with("Config") || name.starts_with("ODBCINST")) {
                file_.functions.insert(name);
            }
        }
    }

    const Image& image_;
    ElfFile& file_;
    Header header_;
    std::vector<Segment> loads_;
    Segment dynamic_{};
    std::map<std::int64_t, std::uint64_t> values_;
    std::uint64_t strings_ = 0;
};

// The machine that this program is made for.
Header ownHeader() {
    static const Image self("/proc/self/exe");
    return self.at<Header>(0);
}

}  // namespace

std::string machineName(unsigned machine, bool isWide) {
    static const std::map<unsigned, std::string> names{
        {EM_386, "x86"},     {EM_X86_64, "x86"},  {EM_ARM, "ARM"},       {EM_AARCH64, "ARM"},
        {EM_PPC, "PowerPC"}, {EM_PPC64, "POWER"}, {EM_S390, "IBM Z"},    {EM_RISCV, "RISC-V"},
        {EM_MIPS, "MIPS"},   {EM_SPARC, "SPARC"}, {EM_SPARCV9, "SPARC"}, {EM_IA_64, "Itanium"}};
    const auto found = names.find(machine);
    return std::string(isWide ? "64-bit " : "32-bit ") +
           (found != names.end() ? found->second : "machine " + std::to_string(machine));
}

ElfFile readElf(const std::string& path) {
    ElfFile file;
    const Image image(path);
    const auto ident = image.at<std::array<unsigned char, EI_NIDENT>>(0);
    if (image.error() != 0) {
        file.error = image.error();
        return file;
    }
    file.kind = ElfFile::kOther;
    if (std::memcmp(ident.data(), ELFMAG, SELFMAG) != 0 || image.bytes().size() < sizeof(Elf32_Ehdr)) {
        return file;
    }
    // Both sizes of header agree up to here.
    const auto header = image.at<Elf32_Ehdr>(0);
    const Header own = ownHeader();
    file.machine = machineName(header.e_machine, ident[EI_CLASS] == ELFCLASS64);
    if (ident[EI_CLASS] != own.e_ident[EI_CLASS] || ident[EI_DATA] != own.e_ident[EI_DATA] ||
        header.e_machine != own.e_machine) {
        file.kind = ElfFile::kOtherMachine;
        return file;
    }
    Reader(image, file).read();
    const auto whole = image.at<Header>(0);
    const bool isWhole =
        std::max(whole.e_phoff + whole.e_phnum * sizeof(Segment),
                 whole.e_shoff + static_cast<std::uint64_t>(whole.e_shnum) * whole.e_shentsize) <= image.bytes().size();
    file.kind = header.e_type == ET_DYN && isWhole ? ElfFile::kLibrary : ElfFile::kOther;
    return file;
}

}  // namespace doctor
