#pragma once

#include <cstdint>
#include <string>

#include "gif_import/Decoder.h"

namespace GifImport {

// The process-wide decoded files, keyed by the file name exactly as the
// kernel passed it (two spellings of one path are two entries).

// The cached decoder of the file, or a new, not yet decoded one when the file
// can be opened; null (and nothing cached) otherwise.
Decoder *getOrLoad(const std::string &fileName);

// Destroys the file's decoder, closing its stream and freeing its memory;
// false when it was not cached. The next call about the file opens and
// decodes it afresh.
bool eraseDecoder(const std::string &fileName);

// Destroys every decoder.
void destroyAllDecoders();

std::size_t cachedDecoderCount();

// The memory that every cached decoder holds.
std::uint64_t bytesHeldByDecoders();

// Frees the canvas snapshots of every cached decoder; false when there were none.
bool dropAllSnapshots();

}  // namespace GifImport
