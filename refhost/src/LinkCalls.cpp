// Link calls: arguments go out as one packet, the answer comes back as one.

#include <string>

#include "Expr.h"
#include "Faults.h"
#include "Plugins.h"
#include "refhost/loopback.h"

namespace refhost {
namespace {

std::string &answerProblem() {
    static std::string text;
    return text;
}

long tokenCount(const RhExpr &expr) {
    long count = 1;
    for (const ExprPtr &part : expr.parts) count += tokenCount(*part);
    return count;
}

bool write(ZvLINK link, const RhExpr &expr) {
    switch (expr.kind) {
    case RH_EXPR_INTEGER: return ZvPutInteger64(link, expr.integer);
    case RH_EXPR_REAL: return ZvPutReal64(link, expr.real);
    case RH_EXPR_SYMBOL: return ZvPutSymbol(link, expr.text.c_str());
    case RH_EXPR_STRING:
        return ZvPutUTF8String(link, reinterpret_cast<const unsigned char *>(expr.text.data()),
                               static_cast<int>(expr.text.size()));
    case RH_EXPR_NORMAL:
        if (!ZvPutFunction(link, expr.text.c_str(), static_cast<int>(expr.parts.size())))
            return false;
        for (const ExprPtr &part : expr.parts)
            if (!write(link, *part)) return false;
        return true;
    }
    return false;
}

struct ByteArray {
    const unsigned char *data;
    const int *dimensions;
    char **heads;
    int depth;
};

// One level of a row-major byte array as nested expressions.
ExprPtr arrayLevel(const ByteArray &array, int level, std::size_t offset) {
    std::size_t stride = 1;
    for (int deeper = level + 1; deeper < array.depth; ++deeper) stride *= array.dimensions[deeper];
    std::vector<ExprPtr> parts;
    for (int i = 0; i < array.dimensions[level]; ++i) {
        const std::size_t at = offset + i * stride;
        parts.push_back(level + 1 == array.depth ? makeInteger(array.data[at])
                                                 : arrayLevel(array, level + 1, at));
    }
    return makeNormal(array.heads != nullptr ? array.heads[level] : "List", std::move(parts));
}

ExprPtr readArray(ZvLINK link) {
    ByteArray array{};
    unsigned char *data = nullptr;
    int *dimensions = nullptr;
    if (!ZvGetInteger8Array(link, &data, &dimensions, &array.heads, &array.depth)) return nullptr;
    array.data = data;
    array.dimensions = dimensions;
    ExprPtr expr = arrayLevel(array, 0, 0);
    ZvReleaseInteger8Array(link, data, dimensions, array.heads, array.depth);
    return expr;
}

ExprPtr read(ZvLINK link, int depth);

ExprPtr readNormal(ZvLINK link, int depth) {
    const char *head = nullptr;
    int count = 0;
    if (!ZvGetFunction(link, &head, &count)) return nullptr;
    ExprPtr expr = makeNormal(head);
    ZvReleaseFunction(link, head);
    for (int i = 0; i < count; ++i) {
        ExprPtr part = read(link, depth + 1);
        if (part == nullptr) return nullptr;
        expr->parts.push_back(std::move(part));
    }
    return expr;
}

ExprPtr readAtom(ZvLINK link, int kind) {
    switch (kind) {
    case ZVTK_INTEGER: {
        int64_t value = 0;
        return ZvGetInteger64(link, &value) ? makeInteger(value) : nullptr;
    }
    case ZVTK_REAL: {
        double value = 0;
        return ZvGetReal64(link, &value) ? makeReal(value) : nullptr;
    }
    case ZVTK_SYMBOL: {
        const char *name = nullptr;
        if (!ZvGetSymbol(link, &name)) return nullptr;
        ExprPtr expr = makeSymbol(name);
        ZvReleaseSymbol(link, name);
        return expr;
    }
    case ZVTK_STRING: {
        const unsigned char *bytes = nullptr;
        int size = 0, characters = 0;
        if (!ZvGetUTF8String(link, &bytes, &size, &characters)) return nullptr;
        ExprPtr expr = makeString(std::string(reinterpret_cast<const char *>(bytes), size));
        ZvReleaseUTF8String(link, bytes, size);
        return expr;
    }
    case ZVTK_INTEGER8_ARRAY: return readArray(link);
    default: return nullptr;
    }
}

ExprPtr read(ZvLINK link, int depth) {
    if (depth > maxExprDepth) return nullptr;
    const int kind = ZvGetNext(link);
    return kind == ZVTK_FUNCTION ? readNormal(link, depth) : readAtom(link, kind);
}

// The plug-in's answer, or null with the reason in answerProblem().
ExprPtr readAnswer(ZvLINK link, long argumentTokens) {
    if (ZvLoopbackFailed(link)) {
        answerProblem() = "the link failed during the call";
        return nullptr;
    }
    if (ZvLoopbackTokensRead(link) != argumentTokens) {
        answerProblem() = "the export did not read exactly its arguments";
        return nullptr;
    }
    ExprPtr answer = read(link, 0);
    if (answer == nullptr) {
        answerProblem() = "no complete expression in an ended packet";
        return nullptr;
    }
    if (ZvGetNext(link) != ZVTK_ERROR) {
        answerProblem() = "more than one expression written";
        return nullptr;
    }
    return answer;
}

}  // namespace
}  // namespace refhost

extern "C" {

int rh_call_link(RhPlugin *plugin, const char *name, const RhExpr *arguments, RhExpr **answer) {
    using namespace refhost;
    if (answer != nullptr) *answer = nullptr;
    answerProblem().clear();
    auto export_ = reinterpret_cast<QuorbelLinkFunction>(rh_plugin_symbol(plugin, name));
    if (export_ == nullptr) return -1000;

    ZvLINK link = ZvOpenLoopback();
    if (!ZvNewPacket(link) || (arguments != nullptr && !write(link, *arguments)) ||
        !ZvEndPacket(link) || !ZvFlush(link)) {
        ZvClose(link);
        answerProblem() = "the arguments cannot be written";
        return QUORBEL_FUNCTION_ERROR;
    }
    const long argumentTokens = arguments != nullptr ? tokenCount(*arguments) : 0;
    if (const int writes = takeLinkFault(); writes >= 0) ZvLoopbackFailAfter(link, writes);

    const int code = export_(callTable(plugin), link);
    if (code == 0 && answer != nullptr) *answer = readAnswer(link, argumentTokens).release();
    ZvClose(link);
    return code;
}

const char *rh_link_answer_problem(void) { return refhost::answerProblem().c_str(); }

}  // extern "C"
