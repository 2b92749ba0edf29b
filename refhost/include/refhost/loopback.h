/*
 * Extensions of the loopback link that the SDK does not have. The reference
 * host uses them to reach a plug-in's failure paths and to check that a
 * plug-in consumed exactly its arguments.
 */
#ifndef REFHOST_LOOPBACK_H
#define REFHOST_LOOPBACK_H

#include "quorbel/zvlink.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes (ZvNewPacket, every ZvPut*, ZvEndPacket, ZvFlush) beyond the next
   `puts` fail and put the link in its error state. A negative value lifts the
   limit. */
void ZvLoopbackFailAfter(ZvLINK link, int puts);

/* Tokens read from the link so far; a function token with its head counts one,
   its arguments count on their own. */
long ZvLoopbackTokensRead(ZvLINK link);

/* Non-zero when the link is in its error state. */
int ZvLoopbackFailed(ZvLINK link);

#ifdef __cplusplus
}
#endif

#endif
