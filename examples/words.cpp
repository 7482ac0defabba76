// A string table: every word of a text as an XCString, each different word stored once.
//
//     words TEXT
//
// Prints the words that occur more than once, and what sharing their buffers has saved.
#include <veldt20/strings.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

class StringTable {
  public:
    /// A string with this text, which shares its buffer with all others that the table gave.
    XCString Intern(const char* text) {
        const auto at = std::lower_bound(strings_.begin(), strings_.end(), text, Before);
        if (at != strings_.end() && at->Compare(text) == 0) return *at;
        return *strings_.insert(at, XCString(text));
    }

    std::size_t Size() const { return strings_.size(); }

  private:
    static bool Before(const XCString& a, const char* b) { return a.Compare(b) < 0; }

    std::vector<XCString> strings_;  ///< in the order of Compare, none twice
};

/// Two strings of one table are equal just when they have one buffer.
bool Same(const XCString& a, const XCString& b) {
    return static_cast<const char*>(a) == static_cast<const char*>(b);
}

std::vector<XCString> ReadWords(std::istream& text, StringTable& table) {
    std::vector<XCString> words;
    for (std::string raw; text >> raw;) {
        XCString word(raw.c_str());
        word.MakeLower();
        word = word.SpanExcluding(".,:;!?()");
        if (word.IsEmpty() == 0) words.push_back(table.Intern(word));
    }
    return words;
}

int BlockSize(const XCString& word) {
    return static_cast<int>(sizeof(XCStringData)) + word.GetAllocLength() + 1;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    std::ifstream text(arguments[1]);
    if (!text) {
        std::fprintf(stderr, "%s: can't be read\n", arguments[1]);
        return 1;
    }
    StringTable table;
    std::vector<XCString> words = ReadWords(text, table);
    std::stable_sort(words.begin(), words.end(),
                     [](const XCString& a, const XCString& b) { return a.Compare(b) < 0; });
    int stored = 0;
    int unshared = 0;
    for (auto word = words.begin(); word != words.end();) {
        const auto next = std::find_if(word, words.end(),
                                       [&](const XCString& other) { return !Same(*word, other); });
        const auto times = static_cast<int>(next - word);
        if (times > 1) std::printf("%3d %s\n", times, static_cast<const char*>(*word));
        stored += BlockSize(*word);
        unshared += BlockSize(*word) * times;
        word = next;
    }
    std::printf("%zu words, %zu different: %d bytes in place of %d\n", words.size(), table.Size(),
                stored, unshared);
    return 0;
}
