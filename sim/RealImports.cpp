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
    // Errors, memory, modules that are mapped already, exceptions.
    {"kernel32.dll",
     " FormatMessageA FormatMessageW GetLastError SetLastError GetErrorMode SetErrorMode GetProcessHeap HeapAlloc "
     "HeapFree HeapReAlloc HeapSize GlobalAlloc GlobalFree GlobalLock GlobalUnlock LocalAlloc LocalFree VirtualAlloc "
     "VirtualFree VirtualProtect VirtualQuery DisableThreadLibraryCalls IsBadReadPtr IsBadWritePtr MulDiv "
     "AddVectoredExceptionHandler RemoveVectoredExceptionHandler RaiseException RtlCaptureContext "
     "RtlLookupFunctionEntry RtlUnwindEx RtlVirtualUnwind RtlAddFunctionTable RtlDeleteFunctionTable "
     "SetUnhandledExceptionFilter UnhandledExceptionFilter __C_specific_handler OutputDebugStringA "
     "OutputDebugStringW IsDebuggerPresent DebugBreak GetStartupInfoA GetStartupInfoW "},
    // Processes, threads, locks.
    {"kernel32.dll",
     " CreateThread ExitThread TerminateThread ResumeThread SuspendThread GetThreadContext SetThreadContext "
     "GetThreadPriority SetThreadPriority GetCurrentThread GetCurrentThreadId GetCurrentProcess GetCurrentProcessId "
     "GetProcessAffinityMask SetProcessAffinityMask TerminateProcess OpenProcess OpenThread GetExitCodeThread "
     "DuplicateHandle GetHandleInformation TlsAlloc TlsFree TlsGetValue TlsSetValue InitializeCriticalSection "
     "InitializeCriticalSectionAndSpinCount InitializeCriticalSectionEx EnterCriticalSection TryEnterCriticalSection "
     "LeaveCriticalSection DeleteCriticalSection ReleaseMutex SetEvent ResetEvent PulseEvent CreateSemaphoreA "
     "CreateSemaphoreW ReleaseSemaphore InterlockedIncrement InterlockedDecrement InterlockedExchange "
     "InterlockedCompareExchange InitOnceExecuteOnce SetThreadDescription FlushInstructionCache "},
    // Files, folders, profile files: all below the host's folders.
    {"kernel32.dll",
     " ReadFile WriteFile FlushFileBuffers SetFilePointer SetFilePointerEx SetEndOfFile GetFileSize GetFileSizeEx "
     "GetFileType GetFileTime SetFileTime GetFileInformationByHandle GetFileAttributesA GetFileAttributesW "
     "GetFileAttributesExA GetFileAttributesExW SetFileAttributesA SetFileAttributesW CreateDirectoryA "
     "CreateDirectoryW RemoveDirectoryA RemoveDirectoryW DeleteFileA DeleteFileW CopyFileA CopyFileW MoveFileA "
     "MoveFileW MoveFileExA MoveFileExW FindFirstFileA FindFirstFileW FindNextFileA FindNextFileW FindClose "
     "GetFullPathNameA GetFullPathNameW GetShortPathNameA GetShortPathNameW GetLongPathNameA GetLongPathNameW "
     "GetStdHandle GetConsoleMode GetConsoleCP GetConsoleOutputCP WriteConsoleA WriteConsoleW LockFile UnlockFile "
     "GetPrivateProfileIntA GetPrivateProfileIntW GetPrivateProfileStringA GetPrivateProfileStringW "
     "GetPrivateProfileSectionA GetPrivateProfileSectionW GetPrivateProfileSectionNamesA "
     "GetPrivateProfileSectionNamesW WritePrivateProfileStringA WritePrivateProfileStringW "
     "WritePrivateProfileSectionA WritePrivateProfileSectionW "},
    // Text.
    {"kernel32.dll",
     " MultiByteToWideChar WideCharToMultiByte IsDBCSLeadByteEx IsDBCSLeadByte GetACP GetOEMCP GetCPInfo IsValidCodePage "
     "CompareStringA CompareStringW CompareStringOrdinal LCMapStringA LCMapStringW GetLocaleInfoA GetLocaleInfoW "
     "GetStringTypeW GetUserDefaultLCID GetThreadLocale lstrcpyA lstrcpyW lstrcpynA lstrcpynW lstrcmpA lstrcmpW lstrcmpiA "
     "lstrcmpiW lstrlenA lstrlenW lstrcatA lstrcatW FileTimeToSystemTime SystemTimeToFileTime FileTimeToLocalFileTime "
     "LocalFileTimeToFileTime FindResourceA FindResourceW LoadResource LockResource SizeofResource FreeResource "},
    // The compiler's own waits inside its thread support. The library waits on one object at a time.
    {"kernel32.dll", " WaitForMultipleObjects WaitForMultipleObjectsEx SwitchToThread "},
    // The C run-time: memory and text.
    {"msvcrt.dll",
     " malloc calloc realloc free _aligned_malloc _aligned_free _msize memchr memcmp memcpy memmove memset memcpy_s "
     "memmove_s strcat strchr strcmp strcoll strcpy strcspn strerror strlen strncat strncmp strncpy strpbrk strrchr strspn "
     "strstr strtok strxfrm _strdup _stricmp _strnicmp _strlwr _strupr strcpy_s strcat_s strncpy_s strnlen wcscat wcschr "
     "wcscmp wcscoll wcscpy wcscspn wcslen wcsncat wcsncmp wcsncpy wcspbrk wcsrchr wcsspn wcsstr wcstok wcsxfrm _wcsdup "
     "_wcsicmp _wcsnicmp _wcslwr _wcsupr wcscpy_s wcscat_s wcsncpy_s wcsnlen isalnum isalpha iscntrl isdigit isgraph "
     "islower isprint ispunct isspace isupper isxdigit iswalnum iswalpha iswctype iswdigit iswspace iswxdigit tolower "
     "toupper towlower towupper _tolower _toupper _mbschr _mbsrchr "},
    // The C run-time: numbers, printing, streams.
    {"msvcrt.dll",
     " atoi atol atof _atoi64 strtol strtoul strtod _strtoi64 _strtoui64 strtoll strtoull wcstol wcstoul wcstod _wtoi "
     "_wtol _wcstoi64 _wcstoui64 _itoa _ltoa _ultoa _i64toa _ui64toa _itow _ultow sprintf snprintf _snprintf _snprintf_s "
     "sprintf_s swprintf swprintf_s _snwprintf _snwprintf_s sscanf sscanf_s swscanf swscanf_s vsprintf vsprintf_s "
     "vswprintf _vsnprintf _vsnwprintf vsnprintf _vscprintf _vscwprintf _scprintf _scwprintf printf fprintf vfprintf "
     "vprintf fwprintf vfwprintf fputc fputs fputwc fputws fwrite fread fgetc fgets fgetwc ungetc ungetwc putc getc getwc putwc puts fflush "
     "fopen _wfopen fopen_s fdopen _fdopen fclose fseek ftell rewind setvbuf fgetpos fsetpos _fseeki64 _ftelli64 ferror "
     "feof clearerr fileno _fileno _read _write _close _open _wopen _lseek _lseeki64 _fstat64 _filelengthi64 _setmode "
     "_isatty remove _wremove rename __iob_func _iob __acrt_iob_func "},
    // The C run-time: arithmetic and sorting.
    {"msvcrt.dll",
     " abs labs div ldiv floor ceil fabs fmod pow sqrt log log10 exp sin cos tan modf frexp ldexp _copysign _isnan "
     "_finite floorf ceilf fmodf powf sqrtf qsort bsearch rand srand "},
    // The C run-time: start, end, locale, errors, threads, jumps; the conversions of calendar times that it is given.
    {"msvcrt.dll",
     " _initterm _initterm_e _amsg_exit __dllonexit _onexit atexit _lock _unlock exit _exit _cexit abort _assert _wassert "
     "signal raise _errno _set_errno _get_errno _fpreset _controlfp _clearfp _statusfp setlocale localeconv "
     "___lc_codepage_func ___lc_handle_func ___mb_cur_max_func __mb_cur_max _get_osfhandle _beginthreadex _endthreadex "
     "_beginthread _endthread _setjmp _setjmpex setjmp longjmp _set_invalid_parameter_handler __setusermatherr strftime "
     "wcsftime mktime _mktime64 gmtime _gmtime64 localtime _localtime64 _localtime64_s _gmtime64_s difftime _difftime64 "
     "_vsnprintf_s mbstowcs wcstombs mbrtowc wcrtomb mbrlen mbtowc wctomb btowc wctob mbsrtowcs wcsrtombs wctype "
     "_CxxThrowException __CxxFrameHandler _purecall terminate _set_purecall_handler _set_new_handler "},
    // Window and shell helpers that only compute.
    {"user32.dll",
     " CharLowerA CharLowerW CharUpperA CharUpperW CharNextA CharNextW CharPrevA wsprintfA wsprintfW wvsprintfA "
     "wvsprintfW CopyRect EqualRect InflateRect IntersectRect IsRectEmpty OffsetRect PtInRect SetRect SetRectEmpty "
     "SubtractRect UnionRect "},
    {"shell32.dll", " CommandLineToArgvW "},
    {"shlwapi.dll",
     " PathAddBackslashA PathAddBackslashW PathAppendA PathAppendW PathCombineA PathCombineW PathFileExistsA "
     "PathFileExistsW PathFindExtensionA PathFindExtensionW PathFindFileNameA PathFindFileNameW PathIsDirectoryA "
     "PathIsDirectoryW PathRemoveBackslashA PathRemoveBackslashW PathRemoveExtensionA PathRemoveExtensionW "
     "PathRemoveFileSpecA PathRemoveFileSpecW PathRenameExtensionA PathRenameExtensionW StrStrIA StrStrIW StrCmpIW "
     "StrToIntA StrToIntW StrTrimA StrTrimW "},
    // Version resources of files in the host's folder.
    {"version.dll",
     " GetFileVersionInfoSizeA GetFileVersionInfoSizeW GetFileVersionInfoA GetFileVersionInfoW VerQueryValueA "
     "VerQueryValueW "},
    {"oleaut32.dll",
     " SysAllocString SysAllocStringLen SysFreeString SysStringLen SysAllocStringByteLen SysStringByteLen VariantInit "
     "VariantClear "},
};

constexpr const char* kSystemModules[] = {
    "advapi32.dll", "cfgmgr32.dll", "comctl32.dll", "gdi32.dll",   "gdiplus.dll", "kernel32.dll",
    "msvcrt.dll",   "ntdll.dll",    "ole32.dll",    "oleaut32.dll", "psapi.dll",   "setupapi.dll",
    "shell32.dll",  "shlwapi.dll",  "user32.dll",   "version.dll", "winmm.dll",
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
