/*
 * Reference host: a kernel stand-in that implements the Quorbel plug-in SDK
 * for real, loads a plug-in with dlopen and calls its exports exactly as the
 * kernel would.
 *
 * It keeps books on everything it hands out, so that a caller can check that
 * a plug-in freed what it made and gave back every string exactly once, and it
 * can be told to make its next creation or link write fail, so that every
 * failure path of a plug-in can be reached.
 *
 * The host is a process-wide singleton, like the kernel it stands in for;
 * nothing here is thread-safe.
 */
#ifndef REFHOST_REFHOST_H
#define REFHOST_REFHOST_H

#include <stddef.h>

#include "quorbel/QuorbelLibrary.h"

#ifdef __cplusplus
extern "C" {
#endif

/* --- The callback table --------------------------------------------------- */

/* Leave parts out of the table, to reach a plug-in's checks for them. */
enum {
    RH_TABLE_FULL = 0,
    RH_TABLE_WITHOUT_IMAGES = 1,     /* imageFunctions is null */
    RH_TABLE_WITHOUT_RAW_ARRAYS = 2  /* rawArrayFunctions is null */
};

/* The host's callback table. Every variant is a distinct, static table. */
QuorbelLibraryData rh_library_data(int variant);

/* --- Books ---------------------------------------------------------------- */

typedef struct {
    long liveImages;
    long liveRawArrays;
    long liveTensors;
    long stringsIssued;    /* argument strings handed to plug-ins */
    long stringsReleased;  /* ... of which given back once */
    long badReleases;      /* releases of a string not issued, or released twice */
    long badHandles;       /* queries or frees of a handle the host does not know */
    long messages;         /* calls of the message function */
} RhCounters;

RhCounters rh_counters(void);

/* Argument strings issued and not yet given back. */
long rh_strings_outstanding(void);

/* The text of the last message posted ("" before the first); valid until the
   next message. */
const char *rh_last_message(void);

/* --- Fault injection ------------------------------------------------------ */

/* The next creation of that kind (image: new2D, new3D and clone) returns `code`
   without creating anything. One-shot; code 0 cancels. Only creations through
   the callback table count; rh_image_new never fails by injection. */
void rh_fail_next_image_creation(int code);
void rh_fail_next_raw_array_creation(int code);
void rh_fail_next_tensor_creation(int code);

/* The next link handed to a plug-in by rh_call_link accepts `puts` writes
   (ZvNewPacket, ZvPut*, ZvEndPacket, ZvFlush each count one) and fails every
   write after them. One-shot; a negative value cancels. */
void rh_fail_link_after(int puts);

/* Cancels every pending fault. */
void rh_clear_faults(void);

/* --- Objects -------------------------------------------------------------- */

/*
 * An image of `slices` slices (0 or less: a 2-D image), zero-filled. `alpha`
 * marks the last channel as an alpha channel; the SDK's new2D/new3D set it
 * when the channel count is one more than the colour space needs (grey 2,
 * RGB and HSB 4, CMYK 5; with an automatic colour space, 2 or 4).
 */
int rh_image_new(mint slices, mint width, mint height, mint channels, MImage_Data_Type type,
                 MImage_CS_Type colorSpace, mbool interleaved, mbool alpha, MImage *result);

/* A zero-filled raw array as the kernel passes one as an argument: unlike the
   table's create, which plug-ins call, it allows a dimension of 0 (an empty
   list, {0, 3}). It never fails by injection. */
int rh_raw_array_new(MRawArray_Data_Type type, mint rank, const mint *dimensions, MRawArray *result);

/* Bytes of one sample of the type, 0 for an unknown type. */
size_t rh_image_sample_size(MImage_Data_Type type);
size_t rh_raw_array_element_size(MRawArray_Data_Type type);

/* Whether the host knows the handle as a live object of that kind. */
mbool rh_image_is_live(MImage image);
mbool rh_raw_array_is_live(MRawArray array);
mbool rh_tensor_is_live(MTensor tensor);

/* --- Plug-ins ------------------------------------------------------------- */

typedef struct RhPlugin RhPlugin;

/* dlopen the library. On failure returns null and writes the reason. */
RhPlugin *rh_plugin_load(const char *path, char *error, size_t errorSize);

/* Calls QuorbelLibrary_initialize with the given table (null: the full one) and
   returns its code. Later calls pass the same table to the exports. */
int rh_plugin_initialize(RhPlugin *plugin, QuorbelLibraryData libData);
void rh_plugin_uninitialize(RhPlugin *plugin);
/* Un-initialises first when still initialised, then dlcloses. */
void rh_plugin_unload(RhPlugin *plugin);

/* The raw export, or null when the library has no such symbol. */
void *rh_plugin_symbol(RhPlugin *plugin, const char *name);

/* --- Argument-vector calls ------------------------------------------------ */

typedef enum {
    RH_NONE = 0,
    RH_BOOLEAN,
    RH_INTEGER,
    RH_REAL,
    RH_STRING,
    RH_IMAGE,
    RH_RAW_ARRAY,
    RH_TENSOR
} RhKind;

typedef struct {
    RhKind kind;
    union {
        mbool boolean;
        mint integer;
        mreal real;
        /* In an argument: the text to send; the host issues its own copy for
           the call and counts it. In a result: the plug-in's storage. */
        const char *string;
        MImage image;
        MRawArray rawArray;
        MTensor tensor;
    } value;
    /* In a result: whether the plug-in wrote the slot. */
    mbool written;
} RhValue;

/*
 * Calls the argument-vector export `name` with `argc` arguments. `result->kind`
 * says which kind of result to read back; the slot is filled with a sentinel
 * before the call, and `result->written` tells whether the export changed it.
 * Returns the export's code, or -1000 when the library has no such export, or
 * QUORBEL_FUNCTION_ERROR without calling when argc is negative or args is null
 * while argc is positive. An object handed back as a result belongs to the caller, to free through the
 * table.
 */
int rh_call(RhPlugin *plugin, const char *name, mint argc, const RhValue *args, RhValue *result);

/* --- Expressions and link calls ------------------------------------------- */

typedef struct RhExpr RhExpr;

typedef enum {
    RH_EXPR_INTEGER,
    RH_EXPR_REAL,
    RH_EXPR_STRING,
    RH_EXPR_SYMBOL,
    RH_EXPR_NORMAL /* Head[arguments...] */
} RhExprKind;

/*
 * Parses the kernel's input form: integers, reals (1.5, 1., -2.5e-3), strings
 * with \" \\ \n \t \r escapes and \ooo (three octal digits) for any byte,
 * symbols (letters, digits, $), Head[a, b], {a, b} for List[a, b], a -> b for
 * Rule[a, b] (right-associative, binding loosest) and parentheses for grouping.
 * Returns null on a syntax error and writes the reason.
 */
RhExpr *rh_expr_parse(const char *text, char *error, size_t errorSize);

/* Prints in input form: {…} for List, a -> b for Rule, strings quoted and
   escaped (other control bytes as \ooo; non-ASCII bytes as they are), reals in shortest round-trip form with a trailing dot when they
   hold an integer value (1., 0.07, 1.5e-10), symbols bare, Head[a, b]
   otherwise. The text is malloc'd; free it with free(). */
char *rh_expr_format(const RhExpr *expr);

void rh_expr_free(RhExpr *expr);

RhExprKind rh_expr_kind(const RhExpr *expr);
long long rh_expr_integer(const RhExpr *expr);
double rh_expr_real(const RhExpr *expr);
/* The text of a string or symbol, the head of a normal expression (UTF-8). */
const char *rh_expr_text(const RhExpr *expr);
size_t rh_expr_text_length(const RhExpr *expr);
size_t rh_expr_length(const RhExpr *expr);
/* Argument i (0-based) of a normal expression. */
const RhExpr *rh_expr_part(const RhExpr *expr, size_t i);

/* Building (for callers that make arguments without parsing). */
RhExpr *rh_expr_new_integer(long long value);
RhExpr *rh_expr_new_real(double value);
RhExpr *rh_expr_new_string(const char *utf8, size_t length);
RhExpr *rh_expr_new_symbol(const char *name);
/* Takes ownership of the arguments. */
RhExpr *rh_expr_new_normal(const char *head, RhExpr **arguments, size_t count);

/*
 * Calls the link export `name`: writes `arguments` to a fresh loopback link,
 * calls the export, and when it returns 0 reads back the one expression it
 * wrote into *answer (null otherwise, or when the packet cannot be read).
 * Returns the export's code, or -1000 when the library has no such export.
 * Byte arrays come back as nested List expressions of integers.
 *
 * The answer must be one expression in an ended packet, and the export must
 * have read exactly its arguments and left the link without error; otherwise
 * the answer is null and rh_link_answer_problem says why.
 */
int rh_call_link(RhPlugin *plugin, const char *name, const RhExpr *arguments, RhExpr **answer);

/* Why the last rh_call_link gave no answer for code 0; "" otherwise. */
const char *rh_link_answer_problem(void);

#ifdef __cplusplus
}
#endif

#endif
