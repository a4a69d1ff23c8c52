// One line per matter on standard error, however odd the names in it.
#include "cli/messages.h"

#include <algorithm>
#include <iostream>

namespace cli {

void note(std::string const& text)
{
    std::string line = text;
    // Names of files may hold anything; the message stays one line.
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    std::cerr << "stanag-overlay: " << line << std::endl;
}

void noteAll(std::vector<std::string> const& remarks)
{
    for (std::string const& remark : remarks) {
        note(remark);
    }
}

}  // namespace cli
