// mmap, read-only and private.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MappedFile.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace engine {

MappedFile::MappedFile(int file) {
    struct stat info {};
    if (fstat(file, &info) != 0)
        throw std::system_error(errno, std::generic_category());
    m_size = static_cast<std::size_t>(info.st_size);
    if (m_size == 0)
        return;
    void* data = mmap(nullptr, m_size, PROT_READ, MAP_PRIVATE, file, 0);
    if (data == MAP_FAILED)
        throw std::system_error(errno, std::generic_category());
    m_data = static_cast<const char*>(data);
    madvise(data, m_size, MADV_SEQUENTIAL);
}

MappedFile::~MappedFile() {
    if (m_data != nullptr)
        munmap(const_cast<char*>(m_data), m_size);
}

} // namespace engine
