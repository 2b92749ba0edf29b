#include "gif_import/LinkAnswer.h"

#include <string>

#include "gif_import/DecodedFile.h"
#include "gif_import/ImportCodes.h"

namespace GifImport {
namespace {

bool readFileName(ZvLINK link, std::string &fileName) {
    int argumentCount = 0;
    if (ZvTestHead(link, "List", &argumentCount) == 0 || argumentCount != 1) return false;
    const unsigned char *bytes = nullptr;
    int byteCount = 0;
    int charCount = 0;
    if (ZvGetUTF8String(link, &bytes, &byteCount, &charCount) == 0) return false;
    // The link keeps the bytes until it closes; they are not released here.
    fileName.assign(reinterpret_cast<const char *>(bytes), static_cast<std::size_t>(byteCount));
    return true;
}

int answer(ZvLINK link, AnswerWriter write) {
    std::string fileName;
    if (!readFileName(link, fileName)) return MalformedArguments;
    Decoder *decoder = nullptr;
    if (int code = decodedWithFrames(fileName, decoder); code != Success) return code;
    if (ZvNewPacket(link) == 0) return NoFrames;
    LinkWriter writer(link);
    write(writer, *decoder);
    // The answer is complete once written; the end of the packet and the
    // flush do not change the code.
    ZvEndPacket(link);
    ZvFlush(link);
    return Success;
}

}  // namespace

int answerOverLink(ZvLINK link, AnswerWriter write) {
    try {
        return answer(link, write);
    } catch (...) {
        return NoFrames;
    }
}

}  // namespace GifImport
