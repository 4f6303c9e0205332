// A stream that remembers what went through it.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "platform/descriptor.h"

namespace telvane {

class FlujoEnMemoria {
   public:
    FlujoEnMemoria() : descriptor_(::memfd_create("flujo", MFD_CLOEXEC)) {
        if (descriptor_() < 0) throw std::runtime_error("memfd_create");
    }

    int descriptor() const { return descriptor_(); }
    std::string texto() const {
        std::string todo(static_cast<std::size_t>(::lseek(descriptor(), 0, SEEK_END)), '\0');
        EXPECT_EQ(::pread(descriptor(), todo.data(), todo.size(), 0), static_cast<ssize_t>(todo.size()));
        return todo;
    }
    // Ready to be read from the start.
    void llenar(const std::string& bytes) {
        ASSERT_EQ(::write(descriptor(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        ::lseek(descriptor(), 0, SEEK_SET);
    }

   private:
    Descriptor descriptor_;
};

}  // namespace telvane
