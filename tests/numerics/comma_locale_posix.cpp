// No system need have such a locale: it is compiled here, by a program that is part of every
// installation of the C library.
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "numerics/comma_locale.h"

void SetCommaLocale() {
    const std::string folder = std::filesystem::absolute("comma_locale").string();
    std::filesystem::create_directory(folder);
    std::ofstream(folder + "/ascii") << "<code_set_name> ASCII\n<escape_char> /\n"
                                        "CHARMAP\n<U0000>..<U007F> /x00 ASCII\nEND CHARMAP\n";
    std::ofstream(folder + "/source") << "LC_NUMERIC\ndecimal_point \"<U002C>\"\n"
                                         "thousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n";
    // It complains of the categories that are missing, and compiles what there is all the same.
    const std::string compile =
        "cd '" + folder + "' && localedef -c -f ./ascii -i ./source ./comma 2>log";
    static_cast<void>(std::system(compile.c_str()));
    setenv("LOCPATH", folder.c_str(), 1);
    std::setlocale(LC_NUMERIC, "comma");
    std::filesystem::remove_all(folder);
}
