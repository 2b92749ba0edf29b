#include "host/MArgumentManager.h"

#include "host/LibraryData.h"

namespace OstrelUtils {

MArgumentManager::MArgumentManager(mint argc, MArgument *args, MArgument result,
                                   std::span<const unsigned> stringArguments)
    : argc_(argc), args_(args), result_(result), stringArguments_(stringArguments) {
    if (libraryData() == nullptr) throw OstrelError(ArgumentInitError);
    try {
        strings_.resize(argc > 0 ? static_cast<std::size_t>(argc) : 0);
    } catch (...) {
        // No destructor runs for a manager that was never made.
        releaseUnreadStrings();
        throw;
    }
}

MArgumentManager::~MArgumentManager() { releaseUnreadStrings(); }

void MArgumentManager::releaseUnreadStrings() noexcept {
    for (unsigned index : stringArguments_) {
        if (static_cast<mint>(index) >= argc_) continue;
        if (index < strings_.size() && strings_[index]) continue;
        if (char *unread = MArgument_getUTF8String(args_[index]); unread != nullptr)
            libraryData()->releaseUTF8String(unread);
    }
}

const MArgument &MArgumentManager::argument(unsigned index) const {
    if (static_cast<mint>(index) >= argc_)
        throw OstrelError(ArgumentIndexError, "Index " + std::to_string(index) +
                                                  " out-of-bound when accessing Ostrel argument");
    return args_[index];
}

bool MArgumentManager::getBoolean(unsigned index) const {
    return MArgument_getBoolean(argument(index)) != 0;
}

mint MArgumentManager::getInteger(unsigned index) const {
    return MArgument_getInteger(argument(index));
}

mreal MArgumentManager::getReal(unsigned index) const { return MArgument_getReal(argument(index)); }

const std::string &MArgumentManager::getString(unsigned index) {
    const MArgument &arg = argument(index);
    std::unique_ptr<std::string> &copy = strings_[index];
    if (!copy) {
        char *kernelString = MArgument_getUTF8String(arg);
        copy = std::make_unique<std::string>(kernelString != nullptr ? kernelString : "");
        if (kernelString != nullptr) libraryData()->releaseUTF8String(kernelString);
    }
    return *copy;
}

MTensor MArgumentManager::getTensor(unsigned index) const {
    return MArgument_getMTensor(argument(index));
}

MImage_Data_Type MArgumentManager::getImageDataType(unsigned index) const {
    const MArgument &arg = argument(index);
    QuorbelImageFunctions functions = libraryData()->imageFunctions;
    if (functions == nullptr) throw OstrelError(ImageInitError);
    return functions->getDataType(MArgument_getMImage(arg));
}

void MArgumentManager::setInteger(mint value) { MArgument_setInteger(result_, value); }

void MArgumentManager::setBoolean(bool value) {
    MArgument_setBoolean(result_, value ? QUORBEL_TRUE : QUORBEL_FALSE);
}

void MArgumentManager::setString(const char *value) {
    MArgument_setUTF8String(result_, const_cast<char *>(value));
}

}  // namespace OstrelUtils
