#pragma once
// Puts a generated SMBIOS image where the host's SMBIOS device would be (inside the test
// sandbox) and makes sure each test starts with no table held by the reader module.

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/zuvSmbiosReader.h"
#include "zuvSandbox.h"
#include "zuvSmbiosImage.h"

namespace smbiostest {

inline void installImage(const std::vector<uint8_t>& image) {
    zuvtest::writeFile(smbiosDevicePath, std::string(image.begin(), image.end()));
}

inline void installImage(const zuvsim::SmbiosImage& image) { installImage(image.bytes()); }

// Records of one type, freed with free() as the reader's callers must.
template <typename Record>
struct Records {
    int status = -1;
    unsigned count = 0;
    std::unique_ptr<Record, decltype(&free)> table{nullptr, &free};

    explicit Records(int type) {
        void* raw = reinterpret_cast<void*>(1);
        status = smbiosGetRecords(type, &raw, &count);
        table.reset(static_cast<Record*>(raw));
    }
    const Record& operator[](unsigned i) const { return table.get()[i]; }
};

class SmbiosTest : public ::testing::Test {
protected:
    void SetUp() override { smbiosClose(); }
    void TearDown() override { smbiosClose(); }

    // Installs the image and opens it; the test fails if it can't be opened.
    void open(const zuvsim::SmbiosImage& image) {
        installImage(image);
        ASSERT_EQ(smbiosOpen(), 0);
    }
};

}  // namespace smbiostest
