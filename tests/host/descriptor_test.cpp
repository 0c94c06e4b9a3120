#include "host/descriptor.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace zmfb::host {
namespace {

struct ErrorCase {
    int system_error;
    int dos_error;
};

TEST(DosErrors, HaveTheNumberOfTheirFamily) {
    const ErrorCase cases[] = {
        {0, 0},       {ENOENT, 2},   {ENOTDIR, 3}, {ENAMETOOLONG, 3}, {EMFILE, 4},     {ENFILE, 4},
        {EBADF, 6},   {ENOMEM, 8},   {EINVAL, 25}, {ESPIPE, 25},      {EOVERFLOW, 25}, {ENOSPC, 29},
        {EFBIG, 29},  {EDQUOT, 29},  {EPIPE, 29},  {EIO, 30},         {ETXTBSY, 32},   {EBUSY, 32},
        {EAGAIN, 33}, {EDEADLK, 33}, {ENOLCK, 33}, {EACCES, 5},       {EPERM, 5},      {EROFS, 5},
        {EISDIR, 5},  {ELOOP, 5},
    };
    for (const auto& [system_error, expected] : cases)
        EXPECT_EQ(dos_error(system_error), expected) << system_error;
}

TEST(DosErrors, OfAWriteAreAccessDeniedOrAWriteFault) {
    const ErrorCase cases[] = {{EBADF, 5}, {ENOSPC, 29}, {EFBIG, 29}, {EIO, 29}, {EINVAL, 29}};
    for (const auto& [system_error, expected] : cases)
        EXPECT_EQ(dos_write_error(system_error), expected) << system_error;
}

}  // namespace
}  // namespace zmfb::host
