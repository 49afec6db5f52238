// The stores of a simulated terminal: one file for each PAD, complete or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace simulator {

class PadStore {
public:
    /// \param folder where the files lie; made when the first load begins
    explicit PadStore(std::string folder);
    /// Drops what an unfinished load has brought.
    ~PadStore();
    PadStore(const PadStore&) = delete;
    PadStore& operator=(const PadStore&) = delete;

    /// Begins a load into a PAD; what an unfinished one has brought is dropped.
    /// \return false when its file cannot be written
    bool begin(int pad);
    /// Takes a part of the load. \return false when it cannot be written, or no load was begun
    bool append(const std::uint8_t* bytes, std::size_t size);
    /// Makes what came the content of the PAD. \return false when it could not be stored
    bool finish();
    /// Forgets what an unfinished load has brought.
    void drop();

    /// The file that holds the database of a PAD.
    std::string fileOf(int pad) const;

private:
    struct Closer {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };

    std::string m_folder;
    std::string m_target;
    std::string m_part;
    std::unique_ptr<std::FILE, Closer> m_file;
};

} // namespace simulator
