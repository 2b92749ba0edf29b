#pragma once

#include "gif_import/Decoder.h"
#include "gif_import/LinkWriter.h"
#include "quorbel/zvlink.h"

namespace GifImport {

using AnswerWriter = void (*)(LinkWriter &writer, const Decoder &decoder);

// The common course of the link exports: read {fileName} from the link,
// decode the file, and answer with one packet written by `write`.
int answerOverLink(ZvLINK link, AnswerWriter write);

}  // namespace GifImport
