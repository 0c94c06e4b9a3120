// Pages of a table as "zmfb browse" reads them.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "bench/rdd/commands.h"
#include "tool/browse/area_source.h"
#include "tool/browse/window.h"
#include "zmfbconn/methods.h"

namespace zmfb::bench {

namespace {

constexpr std::size_t page = 47;  // rows on a screen of 50 lines
constexpr std::string_view newest_block = "\x01\x08\x0f\x11\x06";
constexpr std::string_view change_block = "\x01\x09\x0f\x11\x06";

struct Shown {
    explicit Shown(zmFBConn& connection) : source(connection, "ITEMS", OpenMode::read_only), window(source) {
        source.area()->order("CODE");
        window.resize(page);
    }
    tool::browse::AreaSource source;
    tool::browse::Window window;
};
std::unique_ptr<Shown> shown;

json open(Worker& worker, const json&) {
    (*worker.ours)(m::setrddactive, true);
    worker.bare->execute("create descending index ITEMS_BACK on ITEMS (CODE)", change_block);
    shown = std::make_unique<Shown>(*worker.ours);
    return json::object();
}

json close(Worker&, const json&) {
    shown.reset();
    return json::object();
}

// The rows that were seen, and the last code of each page.
struct Seen {
    std::int64_t rows = 0;
    std::string codes;

    void add() {
        const tool::browse::Window& window = shown->window;
        rows += static_cast<std::int64_t>(window.rows().size());
        codes += window.rows().back().cells[0].value_or("");
    }
    [[nodiscard]] json reply(double seconds) const {
        return {{"seconds", seconds}, {"rows", rows}, {"codes", codes}};
    }
};

json further(Worker&, const json& request) {
    const int pages = request.at("pages");
    Seen seen;
    shown->window.top();
    const double seconds = seconds_of([&] {
        for (int i = 0; i < pages; ++i) {
            shown->window.page_down();
            seen.add();
        }
    });
    return seen.reply(seconds);
}

json ends(Worker&, const json& request) {
    const int times = request.at("times");
    Seen seen;
    const double seconds = seconds_of([&] {
        for (int i = 0; i < times; ++i) {
            shown->window.bottom();
            seen.add();
            shown->window.top();
            seen.add();
        }
    });
    return seen.reply(seconds);
}

// The same of what queries find, a page after the other.
class Pages {
  public:
    void take(std::span<const XSQLVAR> row) {
        touched_ += touch(row);
        if (++rows_ % page != 0) return;
        const std::string code(row[0].sqldata, static_cast<std::size_t>(row[0].sqllen));
        codes_ += code.substr(0, code.find_last_not_of(' ') + 1);
    }
    [[nodiscard]] json reply(double seconds) const {
        return {{"seconds", seconds}, {"rows", rows_}, {"codes", codes_}, {"touched", touched_}};
    }

  private:
    std::int64_t rows_ = 0;
    std::uint64_t touched_ = 0;
    std::string codes_;
};

constexpr std::string_view columns = "CODE, NAME, CITY, CREDIT, RATE, SINCE, LISTED";

json further_bare(Worker& worker, const json& request) {
    const auto records = request.at("records").get<std::int64_t>();
    std::vector<std::string> codes, keys;  // of all; of those that pages begin behind
    for (std::int64_t i = 1; i <= records; ++i) codes.push_back(fmt::format("K{:07}", i * 7919 % 1000003));
    std::ranges::sort(codes);
    for (std::size_t i = 1; i <= request.at("pages").get<std::size_t>(); ++i)
        keys.push_back(codes[i * page - 1]);
    worker.bare->send_by(Calls::plain);
    Pages pages;
    const double seconds = seconds_of([&] {
        worker.bare->query_each(
            fmt::format("select first {} {} from ITEMS where CODE > ? order by CODE", page, columns), keys,
            newest_block, [&](std::span<const XSQLVAR> row) { pages.take(row); });
    });
    return pages.reply(seconds);
}

json ends_bare(Worker& worker, const json& request) {
    const std::vector<std::string> times(request.at("times").get<std::size_t>(), "A");
    worker.bare->send_by(Calls::plain);
    Pages pages;
    const double seconds = seconds_of([&] {
        for (const char* const order : {"desc", "asc"}) {
            worker.bare->query_each(
                fmt::format("select first {} {} from ITEMS where CODE > ? order by CODE {}", page, columns,
                            order),
                times, newest_block, [&](std::span<const XSQLVAR> row) { pages.take(row); });
        }
    });
    return pages.reply(seconds);
}

constexpr Command commands[] = {
    {.name = "browse.open", .run = open},       {.name = "browse.close", .run = close},
    {.name = "browse.further", .run = further}, {.name = "browse.further.bare", .run = further_bare},
    {.name = "browse.ends", .run = ends},       {.name = "browse.ends.bare", .run = ends_bare},
};

}  // namespace

std::span<const Command> browse_commands() { return commands; }

}  // namespace zmfb::bench
