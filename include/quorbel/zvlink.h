/*
 * Quorbel link library: a stream of symbolic expressions between the kernel
 * and a plug-in.
 *
 * An expression travels as a prefix sequence of tokens: a function token
 * carries its head and argument count and is followed by its arguments.
 * The plug-in reads its argument list from the link and writes its answer as
 * one packet: ZvNewPacket, the tokens of one expression, ZvEndPacket, ZvFlush.
 *
 * Success convention: every function that returns int returns non-zero on
 * success and 0 on failure. After a failure the link is in an error state and
 * every further call on it fails too.
 */
#ifndef QUORBEL_ZVLINK_H
#define QUORBEL_ZVLINK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ZvLink_st *ZvLINK;

/* Kinds of the next token, as ZvGetNext reports them. */
enum {
    ZVTK_ERROR = 0,
    ZVTK_FUNCTION = 'F',
    ZVTK_SYMBOL = 'Y',
    ZVTK_STRING = 'S',
    ZVTK_INTEGER = 'I',
    ZVTK_REAL = 'R',
    ZVTK_INTEGER8_ARRAY = 'A'
};

/* --- Reading -------------------------------------------------------------- */

/* Succeeds when the next token is a function with the given head; stores its
   argument count and consumes the token. Fails, consuming nothing, otherwise. */
int ZvTestHead(ZvLINK link, const char *head, int *argumentCount);

/* Kind of the next token, without consuming it; ZVTK_ERROR at the end. */
int ZvGetNext(ZvLINK link);

/* Reads a string token as UTF-8 bytes. The bytes stay valid until
   ZvReleaseUTF8String or until the link is closed. */
int ZvGetUTF8String(ZvLINK link, const unsigned char **bytes, int *byteCount, int *charCount);
void ZvReleaseUTF8String(ZvLINK link, const unsigned char *bytes, int byteCount);
int ZvGetSymbol(ZvLINK link, const char **name);
void ZvReleaseSymbol(ZvLINK link, const char *name);
int ZvGetFunction(ZvLINK link, const char **head, int *argumentCount);
void ZvReleaseFunction(ZvLINK link, const char *head);
int ZvGetInteger64(ZvLINK link, int64_t *value);
int ZvGetReal64(ZvLINK link, double *value);
/* A rectangular array of bytes 0..255; `dimensions` has `depth` entries.
   Release with ZvReleaseInteger8Array. */
int ZvGetInteger8Array(ZvLINK link, unsigned char **data, int **dimensions, char ***heads,
                       int *depth);
void ZvReleaseInteger8Array(ZvLINK link, unsigned char *data, int *dimensions, char **heads,
                            int depth);

/* --- Writing -------------------------------------------------------------- */

int ZvNewPacket(ZvLINK link);
int ZvPutFunction(ZvLINK link, const char *head, int argumentCount);
int ZvPutSymbol(ZvLINK link, const char *name);
/* A string given as a NUL-terminated sequence of UTF-8 bytes. */
int ZvPutString(ZvLINK link, const char *text);
/* A string given as `byteCount` UTF-8 bytes; it may contain NUL. */
int ZvPutUTF8String(ZvLINK link, const unsigned char *bytes, int byteCount);
int ZvPutInteger64(ZvLINK link, int64_t value);
int ZvPutReal64(ZvLINK link, double value);
/* A rectangular array of unsigned bytes, row-major, with `depth` dimensions.
   `heads` names the head of each level; null means List at every level. */
int ZvPutInteger8Array(ZvLINK link, const unsigned char *data, const int *dimensions,
                       const char **heads, int depth);
int ZvEndPacket(ZvLINK link);
int ZvFlush(ZvLINK link);

/* --- Links ---------------------------------------------------------------- */

/* A link whose reading end returns, in order, what was written to it. */
ZvLINK ZvOpenLoopback(void);
void ZvClose(ZvLINK link);

#ifdef __cplusplus
}
#endif

#endif
