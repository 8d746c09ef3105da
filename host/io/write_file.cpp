#include "host/io/write_file.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace host {

bool write_file(const std::string& path, const std::string& bytes) {
    const std::string temporary = path + ".tmp." + std::to_string(getpid());
    std::ofstream out(temporary, std::ios::binary);
    out << bytes;
    out.close();
    std::error_code error;
    if (out)
        std::filesystem::rename(temporary, path, error);
    if (out && !error)
        return true;
    std::filesystem::remove(temporary, error);
    return false;
}

} // namespace host
