/* Export and linkage macros shared by every public header. */
#ifndef FBCOMPOSE_EXPORT_H
#define FBCOMPOSE_EXPORT_H

#if defined(__GNUC__)
#define FBC_API __attribute__((visibility("default")))
#else
#define FBC_API
#endif

#ifdef __cplusplus
#define FBC_BEGIN_DECLS extern "C" {
#define FBC_END_DECLS }
#else
#define FBC_BEGIN_DECLS
#define FBC_END_DECLS
#endif

#endif
