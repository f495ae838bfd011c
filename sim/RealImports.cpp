#include "sim/RealImports.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace sim {
namespace {

struct RealImports {
  const char* module;
  const char* names;  // blank-separated, with a blank at both ends
};

constexpr RealImports kRealImports[] = {
    // Errors, memory, exceptions, debug output.
    {"kernel32.dll",
     " FormatMessageA GetLastError SetLastError LocalFree VirtualProtect VirtualQuery"
     " AddVectoredExceptionHandler RemoveVectoredExceptionHandler RaiseException"
     " RtlCaptureContext RtlLookupFunctionEntry RtlUnwindEx RtlVirtualUnwind"
     " __C_specific_handler OutputDebugStringA IsDebuggerPresent"
     " DebugBreak "},
    // Threads and locks. Most of it is the compiler's own thread support.
    {"kernel32.dll",
     " ResumeThread SuspendThread GetThreadContext SetThreadContext"
     " GetThreadPriority SetThreadPriority GetCurrentThread GetCurrentThreadId"
     " GetCurrentProcess GetCurrentProcessId GetProcessAffinityMask SetProcessAffinityMask"
     " OpenProcess DuplicateHandle GetHandleInformation TlsAlloc TlsFree TlsGetValue TlsSetValue"
     " InitializeCriticalSection InitializeCriticalSectionAndSpinCount EnterCriticalSection"
     " TryEnterCriticalSection LeaveCriticalSection DeleteCriticalSection ReleaseMutex"
     " ResetEvent CreateSemaphoreA ReleaseSemaphore WaitForMultipleObjects "},
    // Files, folders, profile files: all below the host's folders.
    {"kernel32.dll",
     " WriteFile SetFilePointer GetFileSizeEx GetFileAttributesW CreateDirectoryW DeleteFileA"
     " DeleteFileW CopyFileW GetPrivateProfileIntW"
     " GetPrivateProfileStringA "},
    // Text.
    {"kernel32.dll",
     " MultiByteToWideChar WideCharToMultiByte IsDBCSLeadByteEx lstrlenA lstrcmpA lstrcmpiA "},
    // The C run-time: memory and text. What only computes may stand here before anybody needs it.
    {"msvcrt.dll",
     " malloc calloc realloc _aligned_malloc _aligned_free _msize memchr memcmp memcpy"
     " memmove memset memcpy_s memmove_s strcat strchr strcmp strcoll strcpy strcspn strerror"
     " strlen strncat strncmp strncpy strpbrk strrchr strspn strstr strtok strxfrm _strdup"
     " _stricmp _strnicmp _strlwr _strupr strcpy_s strcat_s strncpy_s strnlen wcscat wcschr"
     " wcscmp wcscoll wcscpy wcscspn wcslen wcsncat wcsncmp wcsncpy wcspbrk wcsrchr wcsspn"
     " wcsstr wcstok wcsxfrm _wcsdup _wcsicmp _wcsnicmp _wcslwr _wcsupr wcscpy_s wcscat_s"
     " wcsncpy_s wcsnlen isalnum isalpha iscntrl isdigit isgraph islower isprint ispunct"
     " isspace isupper isxdigit iswalnum iswalpha iswctype iswdigit iswspace iswxdigit"
     " tolower toupper towlower towupper _tolower _toupper _mbschr _mbsrchr "},
    // The C run-time: numbers and printing into memory.
    {"msvcrt.dll",
     " atoi atol atof _atoi64 strtol strtoul strtod _strtoi64 _strtoui64 strtoll strtoull"
     " wcstol wcstoul wcstod _wtoi _wtol _wcstoi64 _wcstoui64 _itoa _ltoa _ultoa _i64toa"
     " _ui64toa _itow _ultow sprintf snprintf _snprintf _snprintf_s sprintf_s swprintf"
     " swprintf_s _snwprintf _snwprintf_s sscanf sscanf_s swscanf swscanf_s vsprintf"
     " vsprintf_s vswprintf _vsnprintf _vsnwprintf vsnprintf _vscprintf _vscwprintf _scprintf"
     " _scwprintf printf "},
    // The C run-time: streams, for what it prints itself when it ends the process, and for the
    // counters of a coverage build.
    {"msvcrt.dll",
     " fprintf vfprintf fwprintf fputc fputs fputwc fwrite fread fflush fopen _fdopen fclose"
     " fseek _read _close _open _locking _access _mkdir __iob_func "},
    // The C run-time: arithmetic and sorting.
    {"msvcrt.dll",
     " abs labs div ldiv floor ceil fabs fmod pow sqrt log log10 exp sin cos tan modf frexp"
     " ldexp _copysign _isnan _finite floorf ceilf fmodf powf sqrtf qsort bsearch "},
    // The C run-time: start, end, locale, errors, threads, jumps; calendar times that it is given.
    {"msvcrt.dll",
     " _getpid _initterm _initterm_e _amsg_exit __dllonexit _onexit atexit _lock _unlock exit"
     " _exit _cexit abort _assert _wassert signal raise _errno setlocale localeconv"
     " ___lc_codepage_func ___mb_cur_max_func _beginthreadex _endthreadex _setjmp _setjmpex"
     " longjmp strftime wcsftime mktime _mktime64 gmtime _gmtime64 mbstowcs wcstombs mbrtowc"
     " wcrtomb _purecall "},
    // Shell and window helpers that only compute.
    {"shell32.dll", " CommandLineToArgvW "},
    {"shlwapi.dll", " PathAppendA PathCombineA PathRemoveBackslashW PathRemoveFileSpecW "},
    {"user32.dll", " PtInRect "},
    // Within a version resource.
    {"version.dll", " VerQueryValueW "},
};

constexpr const char* kSystemModules[] = {
    "advapi32.dll", "cfgmgr32.dll", "comctl32.dll", "gdi32.dll",    "gdiplus.dll", "kernel32.dll",
    "msvcrt.dll",   "ntdll.dll",    "ole32.dll",    "oleaut32.dll", "psapi.dll",   "setupapi.dll",
    "shell32.dll",  "shlwapi.dll",  "user32.dll",   "version.dll",  "winmm.dll",
};

}  // namespace

bool IsRealImport(const std::string& module, const std::string& name) {
  const std::string word = " " + name + " ";
  return std::any_of(std::begin(kRealImports), std::end(kRealImports), [&](const RealImports& row) {
    return module == row.module && std::strstr(row.names, word.c_str()) != nullptr;
  });
}

bool IsSystemModule(const std::string& base_name) {
  return std::any_of(std::begin(kSystemModules), std::end(kSystemModules),
                     [&](const char* known) { return base_name == known; });
}

}  // namespace sim
