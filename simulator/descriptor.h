// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>
#include <utility>

namespace simulator {

class Descriptor {
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_number >= 0) {
            (void)close(m_number);
        }
    }
    int get() const { return m_number; }

private:
    int m_number;
};

} // namespace simulator
