#include "simulator/pad_store.h"

#include <filesystem>

namespace simulator {

namespace fs = std::filesystem;

PadStore::PadStore(std::string folder) : m_folder(std::move(folder)) {
}

PadStore::~PadStore() {
    drop();
}

std::string PadStore::fileOf(int pad) const {
    char name[32];
    (void)std::snprintf(name, sizeof name, "/pad-%02d.db", pad);
    return m_folder + name;
}

bool PadStore::begin(int pad) {
    drop();
    std::error_code error;
    (void)fs::create_directories(m_folder, error);
    m_target = fileOf(pad);
    m_part = m_target + ".part";
    m_file.reset(std::fopen(m_part.c_str(), "wb"));
    return m_file != nullptr;
}

bool PadStore::append(const std::uint8_t* bytes, std::size_t size) {
    return m_file && std::fwrite(bytes, 1, size, m_file.get()) == size;
}

bool PadStore::finish() {
    std::FILE* file = m_file.release();
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fclose(file) == 0;
    const bool stored = written && std::rename(m_part.c_str(), m_target.c_str()) == 0;
    if (!stored) {
        (void)std::remove(m_part.c_str());
    }
    return stored;
}

void PadStore::drop() {
    if (m_file) {
        m_file.reset();
        (void)std::remove(m_part.c_str());
    }
}

} // namespace simulator
