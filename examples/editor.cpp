// A text editor's buffer: the text lies in one handle, and __XMunger does all the editing.
//
//     editor TEXT EDITS
//
// Reads the text, carries out the edits, writes the text back. The edits are lines:
//     find TEXT
//     insert TEXT (before this one) or replace TEXT, and below it: with TEXT
// where | stands for an end of line.
#include <veldt20/std.h>
#include <veldt20/veldt20.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace {

int Length(std::string_view text) {
    return static_cast<int>(text.size());
}

class TextBuffer {
  public:
    TextBuffer() : text_(_XNewHandle(0)) {}

    /// Both take an open file.
    bool Load(XFile& file) {
        std::int32_t size = 0;
        std::int32_t high = 0;
        if (text_ == nullptr || file.GetEOF(&size, &high) == 0 || high != 0 ||
            _XSetHandleSize(Get(), size) == 0) {
            return false;
        }
        // Read allocates nothing on the heap, so *handle holds still for it without a lock.
        return file.Read(*Get(), static_cast<std::uint32_t>(size), 0, 0) ==
               static_cast<std::uint32_t>(size);
    }
    bool Save(XFile& file) const {
        const auto size = static_cast<std::uint32_t>(Size());
        return file.SetEOF(0, 0) != 0 && file.Write(*Get(), size, 0, 0) == size;
    }

    int Size() const { return XGetHandleSize(Get()); }

    /// The first place of `text`, or -1.
    int Find(std::string_view text) const {
        return __XMunger(Get(), 0, text.data(), Length(text), nullptr, 0);
    }

    bool Insert(int at, std::string_view text) {
        return __XMunger(Get(), at, nullptr, 0, text.data(), Length(text)) >= 0;
    }

    /// Gives the number of places. An empty `by` deletes.
    int ReplaceAll(std::string_view text, std::string_view by) {
        int places = 0;
        // Each call goes on behind what the one before put there.
        for (int at = 0;; ++places) {
            at = __XMunger(Get(), at, text.data(), Length(text), by.data(), Length(by));
            if (at < 0) return places;
        }
    }

  private:
    char** Get() const { return text_.get(); }

    XOwnedHandle text_;
};

/// The rest of the line, behind the blank that ends its first word.
std::string ReadText(std::istream& edits) {
    std::string text;
    std::getline(edits.ignore(), text);
    std::replace(text.begin(), text.end(), '|', '\n');
    return text;
}

void Edit(TextBuffer& buffer, std::istream& edits) {
    std::string command;
    std::string with;
    while (edits >> command) {
        const std::string text = ReadText(edits);
        if (command == "find") {
            std::printf("found at %d\n", buffer.Find(text));
            continue;
        }
        edits >> with;
        const std::string by = ReadText(edits);
        if (command == "insert") {
            const int at = buffer.Find(text);
            std::printf("inserted at %d%s\n", at, buffer.Insert(at, by) ? "" : ": failed");
        } else {
            std::printf("replaced in %d places\n", buffer.ReplaceAll(text, by));
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3 || XMemInitInstance() == 0) return 2;
    XFileSpec path{XCString(arguments[1])};
    XFile file(&path);
    std::ifstream edits(arguments[2]);
    bool done = false;
    if (edits && file.Open(XFile::PermissionReadWrite) != 0) {
        TextBuffer buffer;  // gone before the instance is
        if (buffer.Load(file)) {
            Edit(buffer, edits);
            done = buffer.Save(file);
        }
        done = file.Close() != 0 && done;
    }
    if (!done) std::fprintf(stderr, "%s: error %d\n", arguments[1], file.GetError());
    XMemExitInstance();
    return done ? 0 : 1;
}
