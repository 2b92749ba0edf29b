#include "NestedList.h"

#include <cctype>
#include <optional>
#include <stdexcept>

namespace tarvex_cli {
namespace {

// A recursive-descent reader that checks every sublist against the shape of
// the first sublist at the same depth.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    NestedList read() {
        skipSpace();
        readList(0);
        skipSpace();
        if (pos_ != text_.size()) fail("has text after its closing brace");
        NestedList list;
        for (const auto &extent : shape_) list.dimensions.push_back(extent.value_or(0));
        list.elements = std::move(elements_);
        return list;
    }

private:
    void readList(std::size_t depth) {
        expect('{');
        mint count = 0;
        skipSpace();
        std::optional<bool> itemsAreLists;
        if (!peek('}')) {
            do {
                skipSpace();
                bool isList = peek('{');
                if (itemsAreLists && *itemsAreLists != isList) fail("mixes lists and numbers at one level");
                itemsAreLists = isList;
                if (isList) readList(depth + 1);
                else readElement(depth);
                ++count;
                skipSpace();
            } while (accept(','));
        }
        expect('}');
        checkExtent(depth, count);
    }

    void readElement(std::size_t depth) {
        std::size_t start = pos_;
        while (pos_ < text_.size() && !std::isspace(static_cast<unsigned char>(text_[pos_])) &&
               text_[pos_] != ',' && text_[pos_] != '}' && text_[pos_] != '{')
            ++pos_;
        if (pos_ == start) fail("has an empty element");
        if (leafDepth_ && *leafDepth_ != depth + 1) fail("is not rectangular (numbers at different depths)");
        leafDepth_ = depth + 1;
        elements_.emplace_back(text_.substr(start, pos_ - start));
    }

    void checkExtent(std::size_t depth, mint count) {
        if (shape_.size() <= depth) shape_.resize(depth + 1);
        if (!shape_[depth]) shape_[depth] = count;
        else if (*shape_[depth] != count) fail("is not rectangular (sublists of different lengths)");
    }

    void skipSpace() {
        while (pos_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
    }
    bool peek(char c) const { return pos_ < text_.size() && text_[pos_] == c; }
    bool accept(char c) {
        if (!peek(c)) return false;
        ++pos_;
        return true;
    }
    void expect(char c) {
        if (!accept(c))
            throw std::invalid_argument(std::string("expected '") + c + "' at character " +
                                        std::to_string(pos_ + 1) + " of the list");
    }
    [[noreturn]] void fail(const std::string &what) const {
        throw std::invalid_argument("the list " + what);
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    std::vector<std::optional<mint>> shape_;
    std::optional<std::size_t> leafDepth_;
    std::vector<std::string> elements_;
};

void appendLevel(std::string &out, const std::vector<mint> &dimensions, std::size_t depth, const unsigned char *&next,
                 std::size_t elementSize, const std::function<std::string(const void *)> &formatOne) {
    out += '{';
    for (mint i = 0; i < dimensions[depth]; ++i) {
        if (i > 0) out += ", ";
        if (depth + 1 < dimensions.size()) {
            appendLevel(out, dimensions, depth + 1, next, elementSize, formatOne);
        } else {
            out += formatOne(next);
            next += elementSize;
        }
    }
    out += '}';
}

}  // namespace

std::string formatNestedList(const std::vector<mint> &dimensions, const void *elements, std::size_t elementSize,
                             const std::function<std::string(const void *)> &formatOne) {
    if (dimensions.empty()) return formatOne(elements);
    std::string out;
    const auto *next = static_cast<const unsigned char *>(elements);
    appendLevel(out, dimensions, 0, next, elementSize, formatOne);
    return out;
}

NestedList parseNestedList(std::string_view text) { return Reader(text).read(); }

}  // namespace tarvex_cli
