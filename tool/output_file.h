/// The files that the tool writes for a person.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zmfbconn/dbf/new_file.h"

namespace zmfb::tool {

/// Where the file of a path is or is to be, behind symbolic links of this user and of root; "" for what is no
/// file: a pipe, a terminal, another device. Throws Failure for a link of somebody else, who could lead what
/// is written elsewhere from a folder that all may write to, and for a folder.
std::string place_of_file(const std::string& path);

/// A file that is written under another name beside its place and takes its name at the end: until then what
/// was there stays as it is, and so it does when anything fails. What is no file is written to at once. The
/// functions throw Failure, which names the path.
class OutputFile {
  public:
    explicit OutputFile(std::string path);
    /// What was not closed goes.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes);
    /// Hands on to the system what was written so far.
    void flush();
    /// Everything is in its place when it returns.
    void close();
    /// Lets a file be what it was; what is no file gets all that was written.
    void give_up();

  private:
    template <class Work>
    void attempt(const Work& work) const;
    void open_stream();
    void flush_stream();
    [[noreturn]] void fail() const;

    std::string path_;
    std::optional<dbf::NewFile> file_;  ///< none for what is no file
    int stream_ = -1;
    std::string pending_;
};

}  // namespace zmfb::tool
