// A loopback link: one queue of tokens, read back in the order written.
//
// Tokens written inside a packet become readable only when the packet ends,
// so a reader never sees half of an answer whose writer failed midway.

#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "quorbel/zvlink.h"
#include "refhost/loopback.h"

namespace {

struct Token {
    int kind = ZVTK_ERROR;
    std::string text;  // head, symbol name or string bytes
    int64_t integer = 0;  // also the argument count of a function
    double real = 0;
    std::vector<unsigned char> bytes;
    std::vector<int> dimensions;
    std::vector<std::string> heads;
};

Token makeToken(int kind, std::string text = {}, int64_t integer = 0) {
    Token token;
    token.kind = kind;
    token.text = std::move(text);
    token.integer = integer;
    return token;
}

// Storage handed to a reader, kept until released or until the link closes.
struct Lease {
    std::vector<unsigned char> bytes;
    std::vector<int> dimensions;
    std::vector<std::string> headNames;
    std::vector<char *> heads;
};

}  // namespace

struct ZvLink_st {
    std::deque<Token> readable;
    std::vector<Token> packet;
    bool packetOpen = false;
    bool failed = false;
    long writesLeft = -1;  // negative: no limit
    long tokensRead = 0;
    std::unordered_map<const void *, std::unique_ptr<Lease>> leases;
};

namespace {

int fail(ZvLINK link) {
    if (link != nullptr) link->failed = true;
    return 0;
}

bool usable(ZvLINK link) { return link != nullptr && !link->failed; }

// Every write passes here, so that an injected fault hits all kinds alike.
bool admitWrite(ZvLINK link) {
    if (!usable(link)) return false;
    if (link->writesLeft == 0) {
        link->failed = true;
        return false;
    }
    if (link->writesLeft > 0) --link->writesLeft;
    return true;
}

int put(ZvLINK link, Token &&token) {
    if (!admitWrite(link)) return fail(link);
    if (link->packetOpen)
        link->packet.push_back(std::move(token));
    else
        link->readable.push_back(std::move(token));
    return 1;
}

// The next token when it has the wanted kind; otherwise the link fails.
Token *expect(ZvLINK link, int kind) {
    if (!usable(link) || link->readable.empty() || link->readable.front().kind != kind) {
        fail(link);
        return nullptr;
    }
    return &link->readable.front();
}

void consume(ZvLINK link) {
    link->readable.pop_front();
    ++link->tokensRead;
}

// Always at least one byte, so that every lease has a distinct, non-null key.
Lease &leaseBytes(ZvLINK link, const void *data, size_t size) {
    auto lease = std::make_unique<Lease>();
    lease->bytes.resize(size + 1);
    if (size > 0) std::memcpy(lease->bytes.data(), data, size);
    Lease &held = *lease;
    link->leases.emplace(held.bytes.data(), std::move(lease));
    return held;
}

void release(ZvLINK link, const void *key) {
    if (link != nullptr && key != nullptr) link->leases.erase(key);
}

int leaseText(ZvLINK link, int kind, const char **text) {
    Token *token = expect(link, kind);
    if (token == nullptr || text == nullptr) return fail(link);
    *text = reinterpret_cast<const char *>(
        leaseBytes(link, token->text.data(), token->text.size()).bytes.data());
    consume(link);
    return 1;
}

int utf8CharCount(const std::string &bytes) {
    int count = 0;
    for (unsigned char byte : bytes)
        if ((byte & 0xC0) != 0x80) ++count;
    return count;
}

// Element count of a byte array, or -1 when a dimension is negative or the
// product overflows.
long long elementCount(const int *dimensions, int depth) {
    long long count = 1;
    for (int i = 0; i < depth; ++i) {
        if (dimensions[i] < 0) return -1;
        if (dimensions[i] > 0 && count > INT32_MAX / dimensions[i]) return -1;
        count *= dimensions[i];
    }
    return count;
}

}  // namespace

extern "C" {

int ZvTestHead(ZvLINK link, const char *head, int *argumentCount) {
    Token *token = expect(link, ZVTK_FUNCTION);
    if (token == nullptr || head == nullptr || token->text != head) return fail(link);
    if (argumentCount != nullptr) *argumentCount = static_cast<int>(token->integer);
    consume(link);
    return 1;
}

int ZvGetNext(ZvLINK link) {
    if (!usable(link) || link->readable.empty()) return ZVTK_ERROR;
    return link->readable.front().kind;
}

int ZvGetUTF8String(ZvLINK link, const unsigned char **bytes, int *byteCount, int *charCount) {
    Token *token = expect(link, ZVTK_STRING);
    if (token == nullptr || bytes == nullptr) return fail(link);
    *bytes = leaseBytes(link, token->text.data(), token->text.size()).bytes.data();
    if (byteCount != nullptr) *byteCount = static_cast<int>(token->text.size());
    if (charCount != nullptr) *charCount = utf8CharCount(token->text);
    consume(link);
    return 1;
}

void ZvReleaseUTF8String(ZvLINK link, const unsigned char *bytes, int) { release(link, bytes); }

int ZvGetSymbol(ZvLINK link, const char **name) { return leaseText(link, ZVTK_SYMBOL, name); }

void ZvReleaseSymbol(ZvLINK link, const char *name) { release(link, name); }

int ZvGetFunction(ZvLINK link, const char **head, int *argumentCount) {
    Token *token = expect(link, ZVTK_FUNCTION);
    if (token == nullptr || argumentCount == nullptr) return fail(link);
    const int count = static_cast<int>(token->integer);
    if (!leaseText(link, ZVTK_FUNCTION, head)) return 0;
    *argumentCount = count;
    return 1;
}

void ZvReleaseFunction(ZvLINK link, const char *head) { release(link, head); }

int ZvGetInteger64(ZvLINK link, int64_t *value) {
    Token *token = expect(link, ZVTK_INTEGER);
    if (token == nullptr || value == nullptr) return fail(link);
    *value = token->integer;
    consume(link);
    return 1;
}

int ZvGetReal64(ZvLINK link, double *value) {
    Token *token = expect(link, ZVTK_REAL);
    if (token == nullptr || value == nullptr) return fail(link);
    *value = token->real;
    consume(link);
    return 1;
}

int ZvGetInteger8Array(ZvLINK link, unsigned char **data, int **dimensions, char ***heads,
                       int *depth) {
    Token *token = expect(link, ZVTK_INTEGER8_ARRAY);
    if (token == nullptr || data == nullptr || dimensions == nullptr || depth == nullptr)
        return fail(link);
    Lease &lease = leaseBytes(link, token->bytes.data(), token->bytes.size());
    lease.dimensions = token->dimensions;
    lease.headNames = token->heads;
    for (std::string &name : lease.headNames) lease.heads.push_back(name.data());
    *data = lease.bytes.data();
    *dimensions = lease.dimensions.data();
    if (heads != nullptr) *heads = lease.heads.data();
    *depth = static_cast<int>(lease.dimensions.size());
    consume(link);
    return 1;
}

void ZvReleaseInteger8Array(ZvLINK link, unsigned char *data, int *, char **, int) {
    release(link, data);
}

int ZvNewPacket(ZvLINK link) {
    if (!admitWrite(link) || link->packetOpen) return fail(link);
    link->packetOpen = true;
    return 1;
}

int ZvPutFunction(ZvLINK link, const char *head, int argumentCount) {
    if (head == nullptr || *head == '\0' || argumentCount < 0) return fail(link);
    return put(link, makeToken(ZVTK_FUNCTION, head, argumentCount));
}

int ZvPutSymbol(ZvLINK link, const char *name) {
    if (name == nullptr || *name == '\0') return fail(link);
    return put(link, makeToken(ZVTK_SYMBOL, name));
}

int ZvPutString(ZvLINK link, const char *text) {
    if (text == nullptr) return fail(link);
    return put(link, makeToken(ZVTK_STRING, text));
}

int ZvPutUTF8String(ZvLINK link, const unsigned char *bytes, int byteCount) {
    if (byteCount < 0 || (bytes == nullptr && byteCount > 0)) return fail(link);
    std::string text;
    if (byteCount > 0) text.assign(reinterpret_cast<const char *>(bytes), byteCount);
    return put(link, makeToken(ZVTK_STRING, std::move(text)));
}

int ZvPutInteger64(ZvLINK link, int64_t value) {
    return put(link, makeToken(ZVTK_INTEGER, {}, value));
}

int ZvPutReal64(ZvLINK link, double value) {
    Token token = makeToken(ZVTK_REAL);
    token.real = value;
    return put(link, std::move(token));
}

int ZvPutInteger8Array(ZvLINK link, const unsigned char *data, const int *dimensions,
                       const char **heads, int depth) {
    if (depth < 1 || dimensions == nullptr) return fail(link);
    const long long count = elementCount(dimensions, depth);
    if (count < 0 || (data == nullptr && count > 0)) return fail(link);
    Token token = makeToken(ZVTK_INTEGER8_ARRAY);
    if (count > 0) token.bytes.assign(data, data + count);
    token.dimensions.assign(dimensions, dimensions + depth);
    for (int level = 0; level < depth; ++level) {
        if (heads != nullptr && heads[level] == nullptr) return fail(link);
        token.heads.emplace_back(heads != nullptr ? heads[level] : "List");
    }
    return put(link, std::move(token));
}

int ZvEndPacket(ZvLINK link) {
    if (!admitWrite(link) || !link->packetOpen) return fail(link);
    for (Token &token : link->packet) link->readable.push_back(std::move(token));
    link->packet.clear();
    link->packetOpen = false;
    return 1;
}

int ZvFlush(ZvLINK link) { return admitWrite(link) ? 1 : fail(link); }

ZvLINK ZvOpenLoopback(void) { return new ZvLink_st; }

void ZvClose(ZvLINK link) { delete link; }

void ZvLoopbackFailAfter(ZvLINK link, int puts) {
    if (link != nullptr) link->writesLeft = puts < 0 ? -1 : puts;
}

long ZvLoopbackTokensRead(ZvLINK link) { return link != nullptr ? link->tokensRead : 0; }

int ZvLoopbackFailed(ZvLINK link) { return link == nullptr || link->failed; }

}  // extern "C"
