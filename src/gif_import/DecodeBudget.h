#pragma once

#include <cstdint>

namespace GifImport {

// The bytes that all decoded files may hold together: the count given by the
// environment variable TARVEX_DECODE_BUDGET when it is set, else the memory
// budget of a call.
std::uint64_t decodeBudget();

// Whether `bytes` more fit in the budget beside what the cached decoders hold.
// Canvas snapshots are given back first when they are in the way: they only
// save drawing, and must never turn an answer away.
bool fitsDecodeBudget(std::uint64_t bytes);

// Whether `bytes` more fit beside everything held, snapshots included; for
// taking another snapshot.
bool fitsSpareDecodeBudget(std::uint64_t bytes);

}  // namespace GifImport
