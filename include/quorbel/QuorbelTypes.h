/*
 * Quorbel plug-in SDK: scalar types, argument slots and the numbering shared
 * by the kernel and every plug-in.
 *
 * Plain C; usable from C and C++.
 */
#ifndef QUORBEL_TYPES_H
#define QUORBEL_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Machine integer of the kernel: always 64-bit signed. */
typedef int64_t mint;
/* Boolean: 0 is False, anything else is True. */
typedef int mbool;
/* Machine real of the kernel. */
typedef double mreal;

#define QUORBEL_TRUE 1
#define QUORBEL_FALSE 0

/* Opaque handles to objects that live in the kernel. */
typedef struct QuorbelImage_st *MImage;
typedef struct QuorbelRawArray_st *MRawArray;
typedef struct QuorbelTensor_st *MTensor;

/*
 * One argument (or the result) of an argument-vector export. Every member is
 * a pointer into storage that the kernel owns for the duration of the call;
 * the export reads the member that matches the declared kind of the argument.
 * A string argument is a kernel-owned UTF-8 copy that the export gives back
 * through QuorbelLibraryData.releaseUTF8String exactly once. A string result
 * is owned by the plug-in: the kernel copies it and never releases it.
 */
typedef union {
    mbool *boolean;
    mint *integer;
    mreal *real;
    MTensor *tensor;
    MImage *image;
    MRawArray *rawArray;
    char **utf8String;
} MArgument;

#define MArgument_getBoolean(a) (*((a).boolean))
#define MArgument_getInteger(a) (*((a).integer))
#define MArgument_getReal(a) (*((a).real))
#define MArgument_getMTensor(a) (*((a).tensor))
#define MArgument_getMImage(a) (*((a).image))
#define MArgument_getMRawArray(a) (*((a).rawArray))
#define MArgument_getUTF8String(a) (*((a).utf8String))

#define MArgument_setBoolean(a, v) (*((a).boolean) = (v))
#define MArgument_setInteger(a, v) (*((a).integer) = (v))
#define MArgument_setReal(a, v) (*((a).real) = (v))
#define MArgument_setMTensor(a, v) (*((a).tensor) = (v))
#define MArgument_setMImage(a, v) (*((a).image) = (v))
#define MArgument_setMRawArray(a, v) (*((a).rawArray) = (v))
#define MArgument_setUTF8String(a, v) (*((a).utf8String) = (v))

/* Codes that the kernel's plug-in interface itself defines. */
enum {
    QUORBEL_NO_ERROR = 0,
    QUORBEL_TYPE_ERROR = 1,
    QUORBEL_RANK_ERROR = 2,
    QUORBEL_DIMENSION_ERROR = 3,
    QUORBEL_NUMERICAL_ERROR = 4,
    QUORBEL_MEMORY_ERROR = 5,
    QUORBEL_FUNCTION_ERROR = 6
};

/* Sample types of kernel images. */
typedef enum {
    MImage_Type_Undefined = -1,
    MImage_Type_Bit = 0,    /* one signed byte per sample, 0 or 1 */
    MImage_Type_Bit8 = 1,   /* unsigned 8-bit */
    MImage_Type_Bit16 = 2,  /* unsigned 16-bit */
    MImage_Type_Real32 = 3, /* float */
    MImage_Type_Real64 = 4  /* double */
} MImage_Data_Type;

/* Colour spaces of kernel images. Negative values mean "decide from the data". */
typedef enum {
    MImage_CS_Automatic = -1,
    MImage_CS_Gray = 0,
    MImage_CS_RGB = 1,
    MImage_CS_HSB = 2,
    MImage_CS_CMYK = 3,
    MImage_CS_XYZ = 4,
    MImage_CS_LUV = 5,
    MImage_CS_LAB = 6,
    MImage_CS_LCH = 7
} MImage_CS_Type;

/* Element types of kernel raw arrays. */
typedef enum {
    MRawArray_Type_Undefined = 0,
    MRawArray_Type_Bit8 = 1,          /* int8_t */
    MRawArray_Type_UBit8 = 2,         /* uint8_t */
    MRawArray_Type_Bit16 = 3,         /* int16_t */
    MRawArray_Type_UBit16 = 4,        /* uint16_t */
    MRawArray_Type_Bit32 = 5,         /* int32_t */
    MRawArray_Type_UBit32 = 6,        /* uint32_t */
    MRawArray_Type_Bit64 = 7,         /* int64_t */
    MRawArray_Type_UBit64 = 8,        /* uint64_t */
    MRawArray_Type_Real32 = 9,        /* float */
    MRawArray_Type_Real64 = 10,       /* double */
    MRawArray_Type_Complex_Real32 = 11, /* two floats: real, imaginary */
    MRawArray_Type_Complex_Real64 = 12  /* two doubles: real, imaginary */
} MRawArray_Data_Type;

/* Element types of kernel tensors. */
typedef enum {
    MTensor_Type_Integer = 1, /* mint */
    MTensor_Type_Real = 2     /* mreal */
} MTensor_Data_Type;

#ifdef __cplusplus
}
#endif

#endif
