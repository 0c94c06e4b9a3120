// Two processes share a table: they register that they have it open, and take locks in turns.
//
//     two_processes shop.fdb
//
// The database is made. The processes speak through pipes only to take turns; what one of them is granted or
// refused comes from the database. What goes wrong is thrown, so that a process gives back what it has.
#include <sys/wait.h>
#include <unistd.h>
#include <zmfbconn/connection.h>
#include <zmfbconn/database.h>
#include <zmfbconn/host/error.h>
#include <zmfbconn/methods.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

namespace m = zmfb::m;
using zmfb::RecordNumber;

// One of the two: its connection, its work area, and the pipe that gives it its turn.
class Till {
  public:
    Till(std::string name, const std::string& database, int turn, int other)
        : name_(std::move(name)),
          turn_(turn),
          other_(other),
          connection_(database, "SYSDBA"),
          area_(connection_(m::getuniqueareaid, "CUSTOMERS", name_)) {
        if (!connection_.isconnected()) throw std::runtime_error(zmfb::last_engine_message());
        connection_(m::settableusedbyarea, true, "CUSTOMERS", area_, true);
    }

    Till(const Till&) = delete;
    Till& operator=(const Till&) = delete;
    ~Till() {
        try {
            if (open_) close();
        } catch (const std::exception& error) {
            std::cerr << name_ << ": " << error.what() << '\n';
        }
    }

    // Leaves the word to the other process.
    void pass_on() { [[maybe_unused]] const auto done = write(other_, "x", 1); }

    void wait_for_turn() {
        char turn = 0;
        if (read(turn_, &turn, 1) != 1) throw std::runtime_error("the other process is gone");
    }

    void lock_record(int recno) {
        say("locks record " + std::to_string(recno),
            connection_(m::setrecordaslocked, "CUSTOMERS", area_, RecordNumber(recno)));
    }

    void unlock_record(int recno) {
        say("unlocks record " + std::to_string(recno),
            connection_(m::setrecordasunlocked, "CUSTOMERS", area_, RecordNumber(recno)));
    }

    void lock_table() { say("locks the table", connection_(m::settableaslocked, "CUSTOMERS", area_)); }

    // A work area that closes takes back its locks and its registration.
    void close() {
        open_ = false;
        connection_(m::unlockallrecords, "CUSTOMERS", area_);
        connection_(m::settableasunlocked, "CUSTOMERS", area_);
        connection_(m::settableusedbyarea, false, "CUSTOMERS", area_, true);
        say("closes the table; is it in use?", connection_(m::istableinuse, "CUSTOMERS"));
    }

  private:
    void say(const std::string& what, bool answer) {
        std::cout << name_ << ' ' << what << ": " << (answer ? ".T." : ".F.") << std::endl;
    }

    std::string name_;
    int turn_, other_;
    zmfb::zmFBConn connection_;
    zmfb::AreaId area_;
    bool open_ = true;
};

void first(Till& desk) {
    desk.lock_record(3);
    desk.pass_on();
    desk.wait_for_turn();
    desk.unlock_record(3);
    desk.pass_on();
    desk.wait_for_turn();
    desk.lock_table();
    desk.close();
    desk.pass_on();
}

void second(Till& till) {
    till.wait_for_turn();
    till.lock_record(3);  // the desk has it
    till.lock_record(4);
    till.pass_on();
    till.wait_for_turn();
    till.lock_record(3);
    till.pass_on();
    till.wait_for_turn();
    till.lock_table();
    till.close();
}

bool make_database(const std::string& database) {
    if (const zmfb::Status done = zmfb::create_database(database, "SYSDBA", ""); !done.ok()) {
        std::cerr << done.message() << '\n';
        return false;
    }
    zmfb::zmFBConn connection(database, "SYSDBA");
    return connection(m::createtable, "customers", zmfb::Structure{{"NAME", "C", 24, 0}});
}

// Opens the table at one of the two, and does its part.
int run(const char* name, const std::string& database, int turn, int other, void (*part)(Till&)) {
    // The default error block would end the process on the spot, and its locks would stay.
    const zmfb::host::ThrowingErrors thrown;
    try {
        Till till(name, database, turn, other);
        part(till);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << name << ": " << error.what() << '\n';
        return 1;
    }
}

// Runs `work` in a process of its own: the client library must not be taken through a fork.
template <class Work>
bool in_a_process(const Work& work) {
    const pid_t child = fork();
    if (child == 0) std::exit(work() ? 0 : 1);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: two_processes DATABASE\n";
        return 2;
    }
    const std::string database = argv[1];
    if (const zmfb::Status prepared = zmfb::prepare_client(database); !prepared.ok()) {
        std::cerr << prepared.message() << '\n';
        return 1;
    }
    if (!in_a_process([&] { return make_database(database); })) return 1;

    std::signal(SIGPIPE, SIG_IGN);
    int to_desk[2], to_till[2];
    if (pipe(to_desk) != 0 || pipe(to_till) != 0) return 1;
    const pid_t child = fork();
    if (child == 0) {
        close(to_desk[0]);
        close(to_till[1]);
        return run("till", database, to_till[0], to_desk[1], second);
    }
    close(to_desk[1]);
    close(to_till[0]);
    const int outcome = run("desk", database, to_desk[0], to_till[1], first);
    close(to_till[1]);  // a till that still waits for its turn learns that nobody is there
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? outcome : 1;
}
