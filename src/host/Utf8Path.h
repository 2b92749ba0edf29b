#pragma once

#include <cstdio>
#include <string>

#ifdef _WIN32
#include <utf8.h>

#include <iterator>
#endif

namespace OstrelUtils {

// Opens a file named by the kernel's UTF-8 bytes. Only the wide open reaches
// every name on Windows, while elsewhere the bytes are the path.
inline std::FILE *openUtf8Path(const std::string &fileName, const char *mode) {
#ifdef _WIN32
    std::wstring wide, wideMode;
    utf8::utf8to16(fileName.begin(), fileName.end(), std::back_inserter(wide));
    for (const char *m = mode; *m != '\0'; ++m) wideMode.push_back(static_cast<wchar_t>(*m));
    return _wfopen(wide.c_str(), wideMode.c_str());
#else
    return std::fopen(fileName.c_str(), mode);
#endif
}

}  // namespace OstrelUtils
