/* Export.h: the export macro and everything else that depends on the compiler or the platform.
 *
 * TAVELL_API marks a symbol of the shared library. A host that links the static library defines TAVELL_STATIC
 * (the CMake target and the pkg-config file of the static library do so). TAVELL_BUILDING is defined only
 * while the library itself is compiled.
 */
#ifndef TAVELL_EXPORT_H
#define TAVELL_EXPORT_H

#if defined(TAVELL_STATIC)
#define TAVELL_API
#elif defined(_WIN32)
#if defined(TAVELL_BUILDING)
#define TAVELL_API __declspec(dllexport)
#else
#define TAVELL_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define TAVELL_API __attribute__((visibility("default")))
#else
#define TAVELL_API
#endif

#endif
