#pragma once

#include <string>

#include "gif_import/Decoder.h"

namespace GifImport {

// The process-wide decoded files, keyed by the file name exactly as the
// kernel passed it (two spellings of one path are two entries).

// The cached decoder of the file, or a new, not yet decoded one when the file
// can be opened; null (and nothing cached) otherwise.
Decoder *getOrLoad(const std::string &fileName);

// Removes the entry of a file found undecodable, so that the next call opens
// and decodes it afresh.
void unlinkDecoder(const std::string &fileName);

// Destroys the file's decoder; false when it was not cached.
bool eraseDecoder(const std::string &fileName);

// Destroys every decoder, cached or unlinked.
void destroyAllDecoders();

std::size_t cachedDecoderCount();

}  // namespace GifImport
