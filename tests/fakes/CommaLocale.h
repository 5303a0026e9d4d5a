#pragma once

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <string>
#include <tuple>

#include "tests/fakes/ScopedEnvironment.h"
#include "tests/fakes/TemporaryFolder.h"

namespace fakes {

// Numbers are written "2,5" until the end of the scope, by a locale made for it where the machine has none such.
class CommaLocale {
public:
    CommaLocale() {
        m_there =
            std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr || std::setlocale(LC_NUMERIC, "de_DE") != nullptr;
        if (!m_there) {
            std::ofstream(m_folder / "comma") << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\n"
                                                 "grouping -1\nEND LC_NUMERIC\n";
            std::ofstream characters(m_folder / "ascii");
            characters << "<code_set_name> ANSI_X3.4-1968\n<mb_cur_max> 1\n<escape_char> /\nCHARMAP\n" << std::hex;
            for (int code = 0; code < 128; ++code) {
                const char* const filling = code < 16 ? "0" : "";
                characters << "<U00" << filling << code << "> /x" << filling << code << " X\n";
            }
            characters << "END CHARMAP\n";
            characters.close();
            const std::string command = "localedef -c -i '" + (m_folder / "comma") + "' -f '" + (m_folder / "ascii") +
                                        "' '" + (m_folder / "xx_XX") + "' > /dev/null 2>&1";
            std::ignore = std::system(command.c_str());  // it tells of all the categories that are left out
            m_there = std::setlocale(LC_NUMERIC, "xx_XX") != nullptr;
        }
    }
    ~CommaLocale() { std::setlocale(LC_NUMERIC, m_before.c_str()); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    bool there() const { return m_there; }

private:
    std::string m_before = std::setlocale(LC_NUMERIC, nullptr);
    fakes::TemporaryFolder m_folder;
    fakes::ScopedEnvironment m_locales{"LOCPATH", m_folder.path()};
    bool m_there = false;
};

}  // namespace fakes
