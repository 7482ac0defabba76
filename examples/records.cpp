// A table of records in an XHandleArray, written to a file and read from it with XFile.
//
//     records SUMMITS.csv TABLE
//
// Reads lines "name,metres,year of the first ascent", keeps them sorted by height, writes the table
// to a new file, reads that one back and prints it.
#include <veldt20/std.h>
#include <veldt20/veldt20.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

/// Stands in the file as it stands in memory: 40 bytes, no pointers, no padding.
struct Summit {
    XStr<30> name;
    std::int32_t metres;
    std::int32_t climbed;  ///< the year
};
static_assert(sizeof(Summit) == 40);

/// What the file begins with; the records follow.
struct FileHeader {
    std::uint32_t magic;
    std::int32_t count;
};
constexpr std::uint32_t kMagic = 0x314D5553;  // "SUM1"

std::uint32_t ByteCount(std::int32_t records) {
    return static_cast<std::uint32_t>(records) * std::uint32_t{sizeof(Summit)};
}

class SummitTable {
  public:
    SummitTable() : records_(8, sizeof(Summit)) {}

    bool Valid() { return records_.IHandleArray() != 0; }
    XRecords<Summit> All() const { return XRecords<Summit>(records_); }

    /// Puts the summit in its place, the highest first.
    bool Add(const Summit& summit) {
        std::int32_t index = 0;
        for (const Summit& other : All()) {
            if (other.metres < summit.metres) break;
            ++index;
        }
        if (records_.Shift(index, 1) == 0) return false;
        All()[static_cast<std::size_t>(index)] = summit;  // after Shift, which may have moved them
        return true;
    }

    /// Both take an open file.
    bool Write(XFile& file) const {
        const FileHeader header{kMagic, records_.GetNumElements()};
        const std::uint32_t bytes = ByteCount(header.count);
        return file.Write(&header, sizeof header, 0, 0) == sizeof header &&
               file.Write(records_.GetArrayPtr(), bytes, sizeof header, 0) == bytes;
    }
    bool Read(XFile& file) {
        FileHeader header{};
        if (file.Read(&header, sizeof header, 0, 0) != sizeof header || header.magic != kMagic ||
            header.count < 0 || header.count > 0x1000000) {
            return false;
        }
        records_.DeleteAll();
        const std::uint32_t bytes = ByteCount(header.count);
        return records_.Grow(header.count) != 0 &&
               file.Read(records_.GetArrayPtr(), bytes, sizeof header, 0) == bytes;
    }

  private:
    XHandleArray records_;
};

bool ReadLines(std::istream& lines, SummitTable& table) {
    std::string name;
    std::string metres;
    std::string climbed;
    while (std::getline(lines, name, ',') && std::getline(lines, metres, ',') &&
           std::getline(lines, climbed)) {
        const Summit summit{XStr<30>(name.c_str()), std::atoi(metres.c_str()),
                            std::atoi(climbed.c_str())};
        if (!table.Add(summit)) return false;
    }
    return lines.eof();
}

bool WriteAndRead(const SummitTable& written, XFile& file, SummitTable& read) {
    if (file.Create() == 0 || file.Open(XFile::PermissionReadWrite) == 0) return false;
    const bool done = written.Write(file) && read.Read(file);
    return file.Close() != 0 && done;
}

bool Convert(const char* from, XFile& file) {
    std::ifstream lines(from);
    SummitTable written;
    SummitTable read;
    if (!written.Valid() || !read.Valid() || !ReadLines(lines, written) ||
        !WriteAndRead(written, file, read)) {
        return false;
    }
    for (const Summit& summit : read.All()) {
        std::printf("%5d m  %d  %s\n", summit.metres, summit.climbed, summit.name.GetCStr());
    }
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3 || XMemInitInstance() == 0) return 2;
    XFileSpec path{XCString(arguments[2])};
    XFile file(&path);
    const bool done = Convert(arguments[1], file);
    if (!done) std::fprintf(stderr, "%s: error %d\n", arguments[2], file.GetError());
    XMemExitInstance();
    return done ? 0 : 1;
}
