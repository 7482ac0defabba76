// Operations on strings that share buffers, against std::string for the texts and a plain model of
// sharing for the buffers. One in eight runs out of memory: nothing may change then.
#pragma once

#include <gtest/gtest.h>
#include <veldt20/strings.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <string>

#include "strings/orders.h"
#include "support/refusing_new.h"

namespace veldt::tests {

/// Its header and workers are open.
class OpenString : public XCString {
  public:
    using XCString::AllocCopy;
    using XCString::ConcatCopy;
    using XCString::GetData;
    using XCString::operator=;
    using XCString::XCString;
};

struct Buffer {
    std::string text;
    int capacity;
    bool locked = false;
    const char* address = nullptr;  // not known until the real string is looked at
};

/// What a string is on: a buffer, or none while it is on the one that all empty strings share.
class Model {
  public:
    Model() = default;
    Model(const Model& from) {
        if (from.Locked()) {
            Assign(Terminated(from.Text()));
        } else {
            on = from.on;
        }
    }

    std::string Text() const { return on ? on->text : std::string(); }
    int Length() const { return static_cast<int>(Text().size()); }
    bool Locked() const { return on && on->locked; }
    int Count() const { return !on || on->locked ? -1 : static_cast<int>(on.use_count()); }
    bool Fits(int length) const {
        return on ? on.use_count() == 1 && length <= on->capacity : length == 0;
    }
    void Replace(std::string text, int capacity) {
        on = capacity > 0 ? std::make_shared<Buffer>(Buffer{std::move(text), capacity}) : nullptr;
    }
    void Assign(std::string text) {
        const int length = static_cast<int>(text.size());
        if (!Fits(length)) Replace("", length);
        if (on) on->text = std::move(text);
    }
    Model& operator=(const Model& from) {
        if (on == from.on) return *this;
        if (!from.on || from.Locked() || Locked()) {
            Assign(from.Text());
        } else {
            on = from.on;
        }
        return *this;
    }
    void Append(const std::string& text) {
        const std::string all = Text() + text;
        const int length = static_cast<int>(all.size());
        if (text.empty()) return;
        if (!Fits(length)) Replace("", length);
        on->text = all;
    }
    void Own() {
        if (on && on.use_count() > 1) Replace(Text(), Length());
    }
    void Reserve(int capacity) {
        if (!Fits(capacity)) Replace(Text(), std::max(capacity, Length()));
    }
    /// Changes a text in place, if it changes, or even if not.
    void Edit(const std::string& text, bool always = false) {
        if (text == Text() && !always) return;
        Own();
        if (on) on->text = text;
    }

    std::shared_ptr<Buffer> on;
};

/// Six strings beside their models. Each call of `choices` gives a number to decide by: a random
/// one, or what a fuzzer has in mind.
template <class Choices>
class XCStringRun {
  public:
    explicit XCStringRun(Choices& choices) : choices_(choices) {}

    void Step() {
        const std::size_t a = Below(kStrings), b = Below(kStrings);
        OpenString& s = strings_[a];
        Model& m = models_[a];
        if (m.Length() > 600) {
            Try([&] { s.Empty(); }, [&] { Empty(m); });
        } else if (Below(40) == 0) {
            Load(s, m);
        } else if (Below(2) == 0) {
            Assignments(s, m, strings_[b], models_[b]);
        } else {
            Edits(s, m);
        }
    }

    void Check() {
        for (std::size_t i = 0; i < kStrings; ++i) {
            const OpenString& s = strings_[i];
            const auto& on = models_[i].on;
            const std::string text = models_[i].Text();
            const char* address = s;
            ASSERT_EQ(s.GetLength(), models_[i].Length());
            ASSERT_EQ(std::memcmp(address, text.c_str(), text.size() + 1), 0);
            ASSERT_EQ(s.GetAllocLength(), on ? on->capacity : 0);
            ASSERT_EQ(s.GetData()->refCount, models_[i].Count());
            if (on && !on->address) on->address = address;
            ASSERT_EQ(address, on ? on->address : static_cast<const char*>(XGetEmptyString()));
        }
        CheckReading(strings_[0], models_[0].Text());
    }

  private:
    static constexpr std::size_t kStrings = 6;

    std::size_t Below(std::size_t bound) { return choices_() % bound; }

    std::string Word() {
        static const char alphabet[] = {'a', 'b', 'A', 'Z', ' ', '\r', '\x85', 'c', 0, 'b', 'a'};
        std::string text(Below(Below(20) == 0 ? 200 : 9), 0);
        for (char& c : text) c = alphabet[Below(sizeof(alphabet))];
        return text;
    }

    /// Runs out of memory now and then: an exception must have left all as it was.
    template <typename Real, typename Expected>
    void Try(Real real, Expected expected) {
        bool threw = false;
        bool refused;
        {
            const RefusedNew refusal(Below(8) == 0 ? 1 + static_cast<long>(Below(5)) : 0);
            try {
                real();
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            refused = refusal.Happened();
        }
        ASSERT_EQ(threw, refused);
        if (!threw) expected();
    }

    static void Empty(Model& m) {
        if (m.Locked()) {
            m.on->text.clear();
        } else {
            m.on = nullptr;
        }
    }

    /// The resources, under ids that say their lengths, are in resources.rc and
    /// resources_posix.cpp.
    void Load(OpenString& s, Model& m) {
        constexpr unsigned int kMissing = 9999;
        const unsigned int ids[] = {kMissing, 0, 254, 255, 510, 511, 512, 1200};
        const unsigned int id = ids[Below(std::size(ids))], length = id % kMissing;
        const std::string text = length == 0 ? "" : std::string(length - 1, 'x') + 'y';
        int loaded = -1;
        const auto expected = [&] {
            ASSERT_EQ(loaded, length != 0);
            if (length < 255) return m.Assign(text);
            // The buffer grew by 256 bytes until a byte beside the terminator was left over.
            m.Reserve(static_cast<int>((length + 257) / 256 * 256 - 1));
            m.Edit(text);
        };
        Try([&] { loaded = s.LoadStringA(nullptr, id); }, expected);
    }

    void Assignments(OpenString& s, Model& m, OpenString& other, Model& otherModel) {
        const std::string w = Word(), t = Terminated(w), all = m.Text();
        const std::size_t i = Below(all.size() + 1);
        const std::string tail = Terminated(all.substr(i));
        const int n = static_cast<int>(Below(20)) - 4, size = static_cast<int>(w.size());
        std::string prefixed = static_cast<char>(w.size()) + w;
        const auto* pascal = reinterpret_cast<const unsigned char*>(prefixed.data());
        std::u16string wide(t.begin(), t.end());
        for (char16_t& c : wide) c &= 0x7F;
        auto* units = reinterpret_cast<unsigned short*>(wide.data());
        const auto part = [&](const std::string& text) {
            Model made;
            made.Assign(text);
            m = made;
        };
        const std::string o = otherModel.Text();
        const std::size_t kept = std::min(static_cast<std::size_t>(std::max(n, 0)), o.size());
        const char* own = s;
        // clang-format off
        switch (Below(19)) {
            case 0: return Try([&] { s = other; }, [&] { m = otherModel; });
            case 1: return Try([&] { const XCString copy(other); s = copy; }, [&] { Model copy(otherModel); m = copy; });
            case 2: return Try([&] { s = t.c_str(); }, [&] { m.Assign(t); });
            case 3: return Try([&] { s = pascal; }, [&] { m.Assign(w); });
            case 4: return Try([&] { s = 'c'; }, [&] { m.Assign("c"); });
            case 5: return Try([&] { s = units; }, [&] { m.Assign({wide.begin(), wide.end()}); });
            case 6: return Try([&] { s = XCString(units); }, [&] { part({wide.begin(), wide.end()}); });
            case 7: return Try([&] { s = XCString(w.data(), size); }, [&] { part(w); });
            case 8: return Try([&] { s = own + i; }, [&] { m.Assign(tail); });
            case 9: return Try([&] { s = other.Left(n); }, [&] { part(o.substr(0, kept)); });
            case 10: return Try([&] { s = other.Right(n); }, [&] { part(o.substr(o.size() - kept)); });
            case 11: return Try([&] { s = other.SpanExcluding("c "); },
                                [&] { part(Terminated(o).substr(0, Terminated(o).find_first_of("c "))); });
            case 12: return Try([&] { s += other; }, [&] { m.Append(o); });
            case 13: return Try([&] { s += t.c_str(); }, [&] { m.Append(t); });
            case 14: return Try([&] { s += pascal; }, [&] { m.Append(w); });
            case 15: return Try([&] { s += '\0'; }, [&] { m.Append(std::string(1, 0)); });
            case 16: return Try([&] { s += own + i; }, [&] { m.Append(tail); });
            case 17: return Try([&] { s = XCString(static_cast<const char*>(nullptr), -1); }, [&] { m.Assign(""); });
            default: return Try([&] { s = static_cast<const char*>(nullptr); }, [&] { m.Assign(""); });
        }
        // clang-format on
    }

    void Edits(OpenString& s, Model& m) {
        const std::string w = Word(), all = m.Text(), head = Terminated(all);
        const std::string rest = all.substr(head.size());
        const int size = static_cast<int>(w.size()), room = size + static_cast<int>(Below(4));
        const int index = all.empty() ? 0 : static_cast<int>(Below(all.size()));
        const bool counted = Below(2) == 0;
        std::string set = all, holed = head;
        if (!set.empty()) set[static_cast<std::size_t>(index)] = 'x';
        std::replace(holed.begin(), holed.end(), 'a', '\0');
        const auto isSpace = [](char c) { return c == ' ' || c == '\r'; };
        const auto first = std::find_if_not(all.begin(), all.end(), isSpace);
        const auto end = std::find_if_not(all.rbegin(), all.rend(), isSpace).base();
        const auto write = [&](char* to) { std::memcpy(to, w.c_str(), w.size() + 1); };
        const auto fill = [&] {
            write(s.GetBuffer(room));
            s.ReleaseBuffer(counted ? size : -1);
        };
        const auto shrink = [&] {
            if (m.on && m.Length() != m.on->capacity) m.Replace(all, m.Length());
        };
        const auto lock = [&] {
            m.Reserve(0);
            if (m.on) m.on->locked = true;
        };
        // clang-format off
        switch (Below(11)) {
            case 0: return Try([&] { s.Empty(); }, [&] { Empty(m); });
            case 1: return all.empty() ? void() : Try([&] { s.SetAt(index, 'x'); }, [&] { m.Edit(set, true); });
            case 2: return Try([&] { s.ReplaceChar('a', 0); }, [&] { m.Edit(holed + rest, true); });
            case 3: return Try([&] { s.MakeLower(); }, [&] { m.Edit(Lower(head) + rest); });
            case 4: return Try([&] { s.TrimLeft(); }, [&] { m.Edit({first, all.end()}); });
            case 5: return Try([&] { s.TrimRight(); }, [&] { m.Edit({all.begin(), end}); });
            case 6: return Try(fill, [&] { m.Reserve(room); m.Edit(counted ? w : Terminated(w)); });
            case 7: return Try([&] { write(s.GetBufferSetLength(size)); }, [&] { m.Reserve(size); m.Edit(w); });
            case 8: return Try([&] { s.FreeExtra(); }, shrink);
            case 9: return Try([&] { s.LockBuffer(); }, lock);
            default: if (m.on.use_count() == 1) Try([&] { s.UnlockBuffer(); }, [&] { m.on->locked = false; });
        }
        // clang-format on
    }

    void CheckReading(const OpenString& s, const std::string& all) {
        const std::string text = Terminated(all);
        const std::string part = Terminated(all.substr(Below(all.size() + 1), Below(90)));
        // npos is -1 as well.
        ASSERT_EQ(s.Find(part.c_str()), static_cast<int>(text.find(part)));
        ASSERT_EQ(s.Find('b'), static_cast<int>(text.find('b')));
        ASSERT_EQ(s.Find('\0'), static_cast<int>(text.size()));
    }

    Choices& choices_;
    std::array<OpenString, kStrings> strings_;
    std::array<Model, kStrings> models_;
};

}  // namespace veldt::tests
