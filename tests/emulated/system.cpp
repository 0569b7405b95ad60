// The smallest system that a static 32-bit Linux program of one thread runs on: for an emulator of a processor whose
// instructions this machine does not have. It is loaded by a multiboot loader behind the program, which is its first
// module; the second is a tar archive of files to read. There is no protection: the program runs as part of it, and
// memory is as the processor has it. Ports 0xE9 (console) and 0x8900 (end) are the emulator's own.
#include <cstddef>
#include <cstdint>
#include <initializer_list>

extern "C" {
void* memcpy(void* to, const void* from, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) static_cast<char*>(to)[i] = static_cast<const char*>(from)[i];
    return to;
}
void* memset(void* to, int value, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) static_cast<char*>(to)[i] = static_cast<char>(value);
    return to;
}
}

namespace {

using Word = std::uint32_t;
using Long = std::uint64_t;

// ---- memory, from low to high: the program, its heap (brk), this system with the modules behind it, stacks, mappings

constexpr Word HEAP_END = 0x27000000, PROGRAM_STACK = 0x2F000000, MAPPINGS = 0x30000000, MAPPINGS_END = 0x58000000;
constexpr Word PAGE = 4096, STACK_SIZE = 0x800000;

Word heapStart, heapEnd, mappingsEnd = MAPPINGS;

Word pages(Word bytes)
{
    return (bytes + PAGE - 1) & ~(PAGE - 1);
}
template <typename T>
T* at(Word address)
{
    return reinterpret_cast<T*>(address);
}
template <typename T>
void store(Word address, T value)
{
    memcpy(at<void>(address), &value, sizeof value);
}

// ---- the console

void out(std::uint16_t port, char value)
{
    __asm__ volatile("outb %0, %1" ::"a"(value), "Nd"(port));
}
void say(const char* text)
{
    for (; *text; ++text) out(0xE9, *text);
}
void say(Word number, Word base = 10)
{
    if (number >= base) say(number / base, base);
    out(0xE9, "0123456789abcdef"[number % base]);
}
[[noreturn]] void end(Word code)
{
    say("\n== exit "), say(code), say("\n");
    for (const char c : {'S', 'h', 'u', 't', 'd', 'o', 'w', 'n'}) out(0x8900, c);
    for (;;) __asm__ volatile("cli; hlt");
}

// ---- files: those of the archive, by the path they have there

struct File
{
    const char* data;
    Word size, place;
};
File files[64]; // the first three are the console
Word archive, archiveEnd;

bool equal(const char* a, const char* b)
{
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
}

// The header of tar: name, at 124 the size in octal digits, at 345 what goes in front of the name.
bool find(const char* path, File& file)
{
    if (*path == '/') ++path;
    for (Word header = archive; header < archiveEnd && *at<char>(header);) {
        char name[260];
        Word length = 0, size = 0;
        const auto append = [&](const char* part, int limit) {
            for (int i = 0; i < limit && part[i]; ++i) name[length++] = part[i];
        };
        append(at<char>(header + 345), 155);
        if (length != 0) name[length++] = '/';
        append(at<char>(header), 100);
        name[length] = 0;
        for (const char* digit = at<char>(header + 124); *digit >= '0' && *digit <= '7'; ++digit)
            size = size * 8 + static_cast<Word>(*digit - '0');
        if (equal(name, path)) {
            file = {at<char>(header + 512), size, 0};
            return true;
        }
        header += 512 + ((size + 511) & ~511u);
    }
    return false;
}
Word readFile(File& file, Word to, Word count)
{
    if (count > file.size - file.place) count = file.size - file.place;
    memcpy(at<void>(to), file.data + file.place, count);
    file.place += count;
    return count;
}

// ---- system calls of Linux for i386, as far as a test program makes them

constexpr Word error(int number)
{
    return static_cast<Word>(-number);
}
constexpr Word NO_ENTRY = error(2), BAD_FILE = error(9), NO_MEMORY = error(12), INVALID = error(22),
               NO_TERMINAL = error(25), NO_CALL = error(38);

Long descriptors[16] = {0, 0x00CF9A000000FFFF, 0x00CF92000000FFFF}; // flat code and data; from 6 on the threads' own
constexpr Long THREAD_DATA = 0x00CFF2000000FFFF;

File* fileOf(Word number)
{
    return number >= 3 && number < 64 && files[number].data ? &files[number] : nullptr;
}
Word open(const char* path)
{
    for (Word i = 3; i < 64; ++i)
        if (!files[i].data) return find(path, files[i]) ? i : NO_ENTRY;
    return BAD_FILE;
}
Word write(Word from, Word count)
{
    for (Word i = 0; i < count; ++i) out(0xE9, at<char>(from)[i]);
    return count;
}
Word each(Word vector, Word count, auto call)
{
    Word sum = 0;
    for (Word i = 0; i < count; ++i) sum += call(at<Word>(vector)[2 * i], at<Word>(vector)[2 * i + 1]);
    return sum;
}
Word seek(File* file, Word offset, Word origin)
{
    if (!file) return error(29);
    return file->place = offset + (origin == 0 ? 0 : origin == 1 ? file->place : file->size);
}
Word map(Word size, Word flags)
{
    constexpr Word ANONYMOUS = 0x20;
    if (!(flags & ANONYMOUS)) return INVALID;
    const Word place = mappingsEnd;
    if (pages(size) > MAPPINGS_END - place) return NO_MEMORY;
    mappingsEnd += pages(size);
    memset(at<void>(place), 0, pages(size));
    return place;
}
Word unmap(Word place, Word size)
{
    if (place + pages(size) == mappingsEnd) mappingsEnd = place; // others are lost
    return 0;
}
Word setHeapEnd(Word wanted)
{
    if (wanted < heapStart || wanted > HEAP_END) return heapEnd;
    if (wanted > heapEnd) memset(at<void>(heapEnd), 0, wanted - heapEnd);
    return heapEnd = wanted;
}
Word setThreadData(Word request) // entry number or -1, then the base
{
    const Long base = at<Word>(request)[1];
    Word& entry = at<Word>(request)[0];
    if (entry == ~0u) entry = 6;
    descriptors[entry] = THREAD_DATA | (base & 0xFFFFFF) << 16 | base >> 24 << 56;
    return 0;
}
Word microseconds()
{
    static Word now; // time goes on when it is asked for; counting instructions would tell nothing
    return now += 10;
}
Word describe(Word result, const char* path, const File* file) // statx
{
    File named;
    if (path && *path) {
        if (!find(path, named)) return NO_ENTRY;
        file = &named;
    }
    memset(at<void>(result), 0, 256);
    store<Word>(result, 0x7FF);
    store<Word>(result + 4, PAGE);
    store<std::uint16_t>(result + 28, file ? 0100644 : 0020666);
    store<Long>(result + 40, file ? file->size : 0);
    return 0;
}

Word call(Word number, Word a, Word b, Word c, Word d, Word e)
{
    // One call a line.
    // clang-format off
    switch (number) {
    case 1: case 252: end(a);
    case 3: return fileOf(a) ? readFile(*fileOf(a), b, c) : BAD_FILE;
    case 4: return write(b, c);
    case 5: return open(at<char>(a));
    case 6: return fileOf(a) ? fileOf(a)->data = nullptr, 0 : 0;
    case 19: return seek(fileOf(a), b, c);
    case 20: case 199: case 200: case 201: case 202: case 224: return 1000; // numbers of process, thread, users
    case 45: return setHeapEnd(a);
    case 54: return NO_TERMINAL;
    case 78: store<Word>(a, 0), store<Word>(a + 4, microseconds()); return 0;
    case 91: return unmap(a, b);
    case 125: case 172: case 174: case 175: case 240: case 258: case 311: return 0; // protection, signals, lists, waits
    case 140: return seek(fileOf(a), c, e) > ~4095u ? INVALID : (store<Long>(d, fileOf(a)->place), 0);
    case 145: return fileOf(a) ? each(b, c, [a](Word to, Word size) { return readFile(*fileOf(a), to, size); }) : BAD_FILE;
    case 146: return each(b, c, write);
    case 183: memcpy(at<void>(a), "/", 2); return 2;
    case 191: store<Word>(b, STACK_SIZE), store<Word>(b + 4, STACK_SIZE); return 0;
    case 192: return map(b, d);
    case 243: return setThreadData(a);
    case 265: store<Word>(b, 0), store<Word>(b + 4, microseconds() * 1000); return 0;
    case 268: case 270: say("\n== signal"); end(128 + c);
    case 295: return open(at<char>(b));
    case 340: if (d) store<Long>(d, STACK_SIZE), store<Long>(d + 8, STACK_SIZE); return 0;
    case 355: memset(at<void>(a), 0x5A, b); return b;
    case 383: return describe(e, at<char>(b), fileOf(a));
    case 403: store<Long>(b, 0), store<Long>(b + 8, Long{microseconds()} * 1000); return 0;
    case 33: case 85: case 195: case 196: case 305: return NO_ENTRY;
    default: return NO_CALL;
    }
    // clang-format on
}

// ---- traps

struct Registers // as the entries below push them
{
    Word edi, esi, ebp, esp, ebx, edx, ecx, eax, vector, errorCode, eip;
};

struct Module
{
    Word start, end, arguments, reserved;
};
struct Boot
{
    Word flags, memory[2], device, arguments, modules;
    const Module* module;
};

} // namespace

extern "C" {

void trap(Registers& registers)
{
    if (registers.vector == 0x80) {
        registers.eax = call(registers.eax, registers.ebx, registers.ecx, registers.edx, registers.esi, registers.edi);
        return;
    }
    say("\n== trap "), say(registers.vector), say(" at "), say(registers.eip, 16), end(139);
}

extern const Word trapEntries[33];

// Which traps push a code of their own: 8, 10 to 14 and 17.
__asm__(".altmacro\n.macro entry n\n"
        "entry\\n: .ifeq (\\n == 8) || (\\n >= 10 && \\n <= 14) || (\\n == 17)\n push $0\n .endif\n push $\\n\n"
        " jmp common\n.pushsection .rodata\n .long entry\\n\n.popsection\n.endm\n"
        ".pushsection .rodata\n.balign 4\ntrapEntries:\n.popsection\n"
        ".set i, 0\n.rept 32\n entry %i\n .set i, i + 1\n.endr\n entry 128\n"
        "common: pusha\n cld\n push %esp\n call trap\n add $4, %esp\n popa\n add $8, %esp\n iret\n"
        ".globl _start\n_start: mov $0x2FFF0000, %esp\n push %ebx\n call start\n"
        ".section .multiboot, \"a\"\n .long 0x1BADB002, 0, -0x1BADB002\n.text\n");

// Loads the program and enters it as Linux does: arguments, environment, auxiliary vector.
[[noreturn]] void start(const Boot& boot)
{
    static Long traps[129];
    for (int i = 0; i < 33; ++i)
        traps[i < 32 ? i : 128] =
            (trapEntries[i] & 0xFFFF) | 8u << 16 | Long{0xEE00} << 32 | Long{trapEntries[i] >> 16} << 48;
    struct [[gnu::packed]]
    {
        std::uint16_t limit;
        Word base;
    } descriptorTable = {sizeof descriptors - 1, reinterpret_cast<Word>(descriptors)},
      trapTable = {sizeof traps - 1, reinterpret_cast<Word>(traps)};
    // Flat segments; then floating point, SSE and the extended registers up to those of AVX-512.
    __asm__ volatile("lgdt %0\n lidt %1\n ljmp $8, $1f\n1: mov $16, %%eax\n mov %%ax, %%ds\n mov %%ax, %%es\n"
                     "mov %%ax, %%ss\n mov %%ax, %%fs\n mov %%ax, %%gs\n mov %%cr0, %%eax\n and $~0xE, %%eax\n"
                     "or $0x22, %%eax\n mov %%eax, %%cr0\n mov %%cr4, %%eax\n or $0x40600, %%eax\n mov %%eax, %%cr4\n"
                     "fninit\n xor %%ecx, %%ecx\n xor %%edx, %%edx\n mov $0xE7, %%eax\n xsetbv" ::"m"(descriptorTable),
                     "m"(trapTable)
                     : "eax", "ecx", "edx", "memory");
    say("== start\n");
    if (boot.modules == 0) say("no program"), end(2);
    if (boot.modules > 1) archive = boot.module[1].start, archiveEnd = boot.module[1].end;

    struct Segment
    {
        Word type, offset, address, physical, inFile, inMemory, flags, alignment;
    };
    const Word image = boot.module->start, entry = *at<Word>(image + 24), headers = *at<Word>(image + 28);
    const Word segments = *at<std::uint16_t>(image + 44);
    Word headersLoaded = 0;
    for (Word i = 0; i < segments; ++i) {
        const Segment& segment = at<Segment>(image + headers)[i];
        if (segment.type != 1) continue;
        memset(at<void>(segment.address), 0, segment.inMemory);
        memcpy(at<void>(segment.address), at<void>(image + segment.offset), segment.inFile);
        if (segment.offset == 0) headersLoaded = segment.address + headers;
        if (segment.address + segment.inMemory > heapStart) heapStart = segment.address + segment.inMemory;
    }
    heapStart = heapEnd = pages(heapStart);

    static Word block[128];
    Word count = 1;
    for (char* text = at<char>(boot.module->arguments); *text && count < 64;) {
        if (*text == ' ') *text++ = 0;
        if (!*text) break;
        block[count++] = reinterpret_cast<Word>(text);
        while (*text && *text != ' ') ++text;
    }
    block[0] = count - 1;
    block[++count] = reinterpret_cast<Word>("LC_ALL=C"); // a zero before and behind
    count += 2;
    static const Word randomBytes[4] = {1, 2, 3, 4};
    for (const Word value : {3u,  headersLoaded,
                             4u,  32u,
                             5u,  segments,
                             6u,  PAGE,
                             9u,  entry,
                             11u, 0u,
                             12u, 0u,
                             13u, 0u,
                             14u, 0u,
                             23u, 0u,
                             25u, reinterpret_cast<Word>(randomBytes),
                             0u,  0u})
        block[count++] = value;
    memcpy(at<void>(PROGRAM_STACK - sizeof block), block, sizeof block);
    __asm__ volatile("mov %0, %%esp\n xor %%edx, %%edx\n jmp *%1" ::"r"(PROGRAM_STACK - sizeof block), "r"(entry));
    __builtin_unreachable();
}
}
