/*
 * Quorbel plug-in SDK: the callback table handed to every export, the image
 * and raw-array function tables, and the signatures a plug-in exports.
 *
 * A plug-in is a shared library. The kernel loads it, calls
 * QuorbelLibrary_initialize once, then calls its exports by name, one at a
 * time on the kernel's thread, and finally calls QuorbelLibrary_uninitialize
 * before unloading it.
 *
 * Every creation function returns QUORBEL_NO_ERROR (0) on success and stores
 * the new handle in its last argument; on any other return the handle is left
 * untouched and nothing was created. The caller owns what it created and frees
 * it with the matching free function, unless it hands it to the kernel as a
 * result.
 */
#ifndef QUORBEL_LIBRARY_H
#define QUORBEL_LIBRARY_H

#include "QuorbelTypes.h"
#include "zvlink.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QUORBEL_VERSION 1

/* Joins several strings into one string argument: STX, three BEL, ETX, bytes
   that never occur in text a user types. */
#define QUORBEL_LIST_SEPARATOR "\x02\x07\x07\x07\x03"

typedef struct st_QuorbelImageFunctions {
    /* A rows x columns image (2-D). */
    int (*new2D)(mint width, mint height, mint channels, MImage_Data_Type type,
                 MImage_CS_Type colorSpace, mbool interleaved, MImage *result);
    /* A stack of `slices` images of rows x columns (3-D). */
    int (*new3D)(mint slices, mint width, mint height, mint channels, MImage_Data_Type type,
                 MImage_CS_Type colorSpace, mbool interleaved, MImage *result);
    int (*clone)(MImage image, MImage *result);
    void (*free)(MImage image);

    MImage_Data_Type (*getDataType)(MImage image);
    mint (*getRowCount)(MImage image);
    mint (*getColumnCount)(MImage image);
    /* 1 for a 2-D image. */
    mint (*getSliceCount)(MImage image);
    /* 2 or 3. */
    mint (*getRank)(MImage image);
    /* Channels including the alpha channel, if any. */
    mint (*getChannels)(MImage image);
    mbool (*alphaChannelQ)(MImage image);
    mbool (*interleavedQ)(MImage image);
    MImage_CS_Type (*getColorSpace)(MImage image);
    /* Interleaved: slices x rows x columns x channels samples, row-major.
       Planar: slices x channels x rows x columns. */
    void *(*getRawData)(MImage image);
} *QuorbelImageFunctions;

typedef struct st_QuorbelRawArrayFunctions {
    int (*create)(MRawArray_Data_Type type, mint rank, const mint *dimensions, MRawArray *result);
    void (*free)(MRawArray array);
    MRawArray_Data_Type (*getType)(MRawArray array);
    mint (*getRank)(MRawArray array);
    const mint *(*getDimensions)(MRawArray array);
    mint (*getFlattenedLength)(MRawArray array);
    /* Row-major elements of the array's element type. */
    void *(*getData)(MRawArray array);
} *QuorbelRawArrayFunctions;

typedef struct st_QuorbelLibraryData {
    mint version;
    /* Gives a string argument back to the kernel. Call once per string. */
    void (*releaseUTF8String)(char *string);
    /* Posts a message to the user of the kernel. */
    void (*message)(const char *text);

    int (*tensorNew)(MTensor_Data_Type type, mint rank, const mint *dimensions, MTensor *result);
    void (*tensorFree)(MTensor tensor);
    mint (*tensorGetRank)(MTensor tensor);
    const mint *(*tensorGetDimensions)(MTensor tensor);
    mint (*tensorGetFlattenedLength)(MTensor tensor);
    MTensor_Data_Type (*tensorGetType)(MTensor tensor);
    mint *(*tensorGetIntegerData)(MTensor tensor);
    mreal *(*tensorGetRealData)(MTensor tensor);

    /* Either table may be null when the kernel offers no such objects. */
    QuorbelImageFunctions imageFunctions;
    QuorbelRawArrayFunctions rawArrayFunctions;
} *QuorbelLibraryData;

/* The two shapes of an export. */
typedef int (*QuorbelArgumentFunction)(QuorbelLibraryData libData, mint argc, MArgument *args,
                                       MArgument result);
typedef int (*QuorbelLinkFunction)(QuorbelLibraryData libData, ZvLINK link);

/* Life cycle, looked up by these exact names. */
typedef int (*QuorbelInitializeFunction)(QuorbelLibraryData libData);
typedef void (*QuorbelUninitializeFunction)(QuorbelLibraryData libData);

#if defined(_WIN32)
#define QUORBEL_EXPORT __declspec(dllexport)
#else
#define QUORBEL_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
}
#endif

#endif
