/// Processes on one embedded database, each with the environment that it makes itself.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/text.h"
#include "tests/support/environment.h"
#include "tests/support/validation.h"
#include "tests/support/worker/worker_process.h"
#include "tests/tool/tool.h"

namespace zmfb::test {

/// Two databases, a and b, in folders of their own, and processes that open them.
class People : public Tool {
  protected:
    static constexpr const char* insert = "insert into T values ('a row of this process')";

    void SetUp() override {
        if (on_server()) GTEST_SKIP() << "lock folders are the embedded engine's";
        for (const char* name : {"a", "b"}) {
            std::filesystem::create_directory(file(name));
            ASSERT_EQ(people_zmfb({"--db", path_of(name), "create"}).err, "");
        }
        ASSERT_EQ(people_zmfb({"--db", path_of("b"), "exec", "create table T (A varchar(30))"}).err, "");
    }

    /// The file of database a or b.
    [[nodiscard]] std::string path_of(const std::string& name) const {
        return file(name) + "/" + name + ".fdb";
    }
    /// Lets everybody read and write a database and its folder.
    void open_to_everybody(const std::string& name) const {
        ::chmod(file(name).c_str(), 0777);
        ::chmod(path_of(name).c_str(), 0666);
    }
    /// Where the processes of this user keep their environment.
    [[nodiscard]] std::string cache() const { return file("cache"); }
    /// The words before a command that give it an environment of its own making, in a cache folder.
    [[nodiscard]] static std::vector<std::string> clean(const std::string& cache) {
        return {"env",
                "-u",
                "FIREBIRD",
                "-u",
                "FIREBIRD_LOCK",
                "-u",
                "ZMFB_DB",
                "XDG_CACHE_HOME=" + cache,
                "ZMFB_UDF_DIR=" + udf_folder()};
    }
    /// The same as another user, whose cache folder is made.
    [[nodiscard]] std::vector<std::string> clean_as(int user) const {
        const std::string cache = folder_of(user, "cache");
        std::vector<std::string> words = as_user(user);
        for (const std::string& word : clean(cache)) words.push_back(word);
        return words;
    }
    /// A new folder of another user's.
    [[nodiscard]] std::string folder_of(int user, const std::string& name) const {
        std::string path = file(name + "-" + std::to_string(user));
        std::filesystem::create_directory(path);
        EXPECT_EQ(::chown(path.c_str(), static_cast<uid_t>(user), static_cast<gid_t>(user)), 0);
        return path;
    }
    /// zmfb as this user.
    [[nodiscard]] Finished people_zmfb(const std::vector<std::string>& words) const {
        return zmfb_by(clean(cache()), words);
    }
    [[nodiscard]] static Finished zmfb_by(std::vector<std::string> command,
                                          const std::vector<std::string>& words) {
        command.emplace_back(ZMFB_TOOL);
        command.insert(command.end(), words.begin(), words.end());
        return run(command);
    }
    /// A process of this user.
    [[nodiscard]] WorkerProcess worker() const { return WorkerProcess(clean(cache())); }

    /// Whether the process can open a database; it opens no other any more.
    static bool opens(WorkerProcess& process, const std::string& path) {
        EXPECT_EQ(show(process.call("prepare", path)), "\"\"");
        return process.call("attach", path, sysdba, "", "").logical();
    }
    static std::string engine_message(WorkerProcess& process) {
        const Value message = process.call("engine");
        return std::string(message.text());
    }
    /// Expects that it cannot, because another process has it open.
    static void expect_refused(WorkerProcess& process, const std::string& path, const WorkerProcess& holder,
                               const std::string& user) {
        EXPECT_FALSE(opens(process, path));
        const std::string message = engine_message(process);
        EXPECT_NE(message.find("process " + std::to_string(holder.pid()) + " (zmfb_worker, user " + user +
                               ") has " + path + " open, and its engine does not keep its locks in "),
                  std::string::npos)
            << message;
    }

    /// Has the processes, which have b open, insert rows into T, all at once; those acknowledged count.
    void insert_rows(const std::vector<WorkerProcess*>& processes) {
        constexpr int rounds = 1500;
        for (int round = 0; round < rounds; ++round) {
            for (WorkerProcess* process : processes) process->start("executeupdate", insert);
            for (WorkerProcess* process : processes) acknowledged_ += host::empty(process->finish()) ? 1 : 0;
        }
    }
    void acknowledge(int rows) { acknowledged_ += rows; }
    /// Expects b, which nobody has open any more, to have each row that was acknowledged, and no damage.
    void expect_nothing_lost() const {
        EXPECT_GT(acknowledged_, 0);
        EXPECT_EQ(BareClient(path_of("b")).rows("select count(*) from T"),
                  (Rows{{std::to_string(acknowledged_)}}));
        EXPECT_EQ(validation(path_of("b")), "");
    }

  private:
    int acknowledged_ = 0;
};

}  // namespace zmfb::test
