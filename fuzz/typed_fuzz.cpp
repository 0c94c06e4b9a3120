// Transactions of programs over a client whose every answer comes from the input: columns of any type, length
// and scale, values, NULLs, blobs, and failures at any call.
#include <fmt/format.h>
#include <ibase.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <deque>
#include <optional>

#include "fuzz/fuzz.h"
#include "fuzz/invented_client.h"
#include "sql/typed/encoding.h"
#include "zmfbconn/transaction.h"

namespace zmfb::fuzz {
namespace {

constexpr unsigned most_columns = 6, most_rows = 3;
constexpr unsigned octets = 1, ascii = 2, utf8 = 4;

// Some are of newer engines.
constexpr unsigned known_types[] = {SQL_TEXT,    SQL_VARYING,   SQL_SHORT,     SQL_LONG,      SQL_INT64,
                                    SQL_FLOAT,   SQL_DOUBLE,    SQL_TIMESTAMP, SQL_TYPE_DATE, SQL_BLOB,
                                    SQL_BOOLEAN, SQL_TYPE_TIME, SQL_D_FLOAT,   SQL_ARRAY,     SQL_NULL,
                                    32752,       32754,         32762};
constexpr unsigned known_sets[] = {0, octets, ascii, 3, utf8, 21, 53, 0x104};
constexpr int statement_types[] = {isc_info_sql_stmt_select, isc_info_sql_stmt_insert, isc_info_sql_stmt_ddl,
                                   isc_info_sql_stmt_exec_procedure, isc_info_sql_stmt_commit};
constexpr ISC_STATUS failures[] = {isc_io_error, isc_deadlock, isc_lock_conflict, isc_net_read_err,
                                   isc_cancelled};

class InventingClient final : public InventedClient {
  public:
    explicit InventingClient(Input& input) : input_(input) {}

    // The row that was fetched last.
    InventedMessage layout;
    std::vector<std::byte> row;

    // A blob's bytes are made of its id.
    std::string content_of(ISC_QUAD id) override {
        const auto number = std::bit_cast<std::uint64_t>(id);
        std::string pattern(sizeof number, '\0');
        std::memcpy(pattern.data(), &number, sizeof number);
        std::string content;
        const std::size_t length = static_cast<std::size_t>(number % 300);
        while (content.size() < length) content += pattern;
        content.resize(length);
        if ((number & 0x10000) != 0) {
            for (char& c : content) c = static_cast<char>(c & 0x7F);
        }
        return content;
    }

  protected:
    // One call in 64 fails.
    ISC_STATUS failure(std::string_view) override {
        if (input_.byte() % 64 != 63) return 0;
        return failures[input_.below(std::size(failures))];
    }
    void describe_statement(InventedStatement& statement) override {
        statement.type = static_cast<unsigned>(statement_types[input_.below(std::size(statement_types))]);
        statement.has_cursor = input_.below(4) != 0;
        for (std::size_t left = input_.below(most_columns + 1); left > 0; --left)
            statement.output.add(invented_item());
        for (std::size_t left = input_.below(3); left > 0; --left) statement.input.add(invented_item());
    }
    void ran(const InventedMessage& input, std::span<const std::byte> values) override {
        const auto stored = [values](unsigned offset) {
            std::uint16_t number = 0;
            std::memcpy(&number, values.data() + offset, sizeof number);
            return number;
        };
        for (const sql::MessageItem& item : input.items()) {
            const std::uint16_t indicator = stored(item.null_offset);
            require(indicator == 0 || indicator == 0xFFFF, "a value is sent, or NULL");
            const bool is_text = indicator == 0 && item.type == SQL_VARYING;
            require(!is_text || stored(item.offset) <= item.length, "a text is sent that there is room for");
        }
    }
    bool fill_row(const InventedStatement& statement, const InventedMessage& message,
                  std::span<std::byte> made) override {
        const bool is_there = statement.rows <= most_rows && !input_.at_end();
        for (const sql::MessageItem& item : message.items()) {
            if (is_there) fill_value(item, made);
        }
        layout = message;
        row.assign(made.begin(), made.end());
        return is_there;
    }
    std::size_t segment_size() override { return input_.byte() + std::size_t{16}; }

  private:
    sql::MessageItem invented_item() {
        sql::MessageItem item;
        item.field = input_.bytes(input_.below(4));
        item.alias = input_.bytes(input_.below(4));
        item.type = known_types[input_.below(std::size(known_types))];
        item.subtype = input_.number<std::int8_t>();
        constexpr unsigned odd_lengths[] = {1011, 1013, 1017,
                                            32765};  // as types of newer engines come, and the longest
        item.length =
            input_.below(8) == 0 ? odd_lengths[input_.below(std::size(odd_lengths))] : input_.byte();
        item.scale = input_.flag() ? 0 : input_.number<std::int8_t>();
        item.character_set = known_sets[input_.below(std::size(known_sets))];
        item.nullable = input_.flag();
        return item;
    }
    void fill_value(const sql::MessageItem& item, std::span<std::byte> made) {
        const auto put = [&](std::size_t at, std::string_view bytes) {
            std::memcpy(made.data() + at, bytes.data(), bytes.size());
        };
        const std::int16_t indicator = input_.below(4) == 0 ? std::int16_t{-1} : std::int16_t{0};
        std::memcpy(made.data() + item.null_offset, &indicator, sizeof indicator);
        if (item.type == SQL_NULL) return;
        const bool varying = item.type == SQL_VARYING;
        const std::string_view bytes = input_.bytes(std::min<std::size_t>(item.length, input_.below(40)));
        put(item.offset + (varying ? 2 : 0), bytes);
        if (!varying) return;
        const auto length =
            input_.below(16) == 0 ? input_.number<std::uint16_t>() : static_cast<std::uint16_t>(bytes.size());
        std::memcpy(made.data() + item.offset, &length, sizeof length);
    }

    Input& input_;
};

void check_error(const SqlError& error) {
    require(error.sqlstate().size() == 5, "a failure has an SQLSTATE");
    require(!error.message().empty(), "a failure has a message");
}

// Does something that may fail.
template <class Work>
bool goes_well(const Work& work) {
    try {
        work();
        return true;
    } catch (const SqlError& error) {
        check_error(error);
        return false;
    }
}

// What a value is shown as, computed in another way; nothing where there is none.
class Shown {
  public:
    Shown(const sql::MessageItem& item, const std::vector<std::byte>& row) : item_(item), row_(row) {}

    [[nodiscard]] bool is_null() const { return stored<std::int16_t>(item_.null_offset) != 0; }

    [[nodiscard]] std::optional<std::string> text() const {
        switch (item_.type) {
            case SQL_SHORT:
                return number(stored<std::int16_t>(item_.offset));
            case SQL_LONG:
                return number(stored<std::int32_t>(item_.offset));
            case SQL_INT64:
                return number(stored<std::int64_t>(item_.offset));
            case SQL_BOOLEAN:
                return stored<char>(item_.offset) != 0 ? "true" : "false";
            case SQL_TYPE_DATE:
            case SQL_TIMESTAMP:
                return moment();
            case SQL_TEXT:
            case SQL_VARYING:
                return plain_text();
            default:
                return std::nullopt;
        }
    }

  private:
    template <class Stored>
    [[nodiscard]] Stored stored(unsigned offset) const {
        Stored value;
        std::memcpy(&value, row_.data() + offset, sizeof value);
        return value;
    }
    [[nodiscard]] std::optional<std::string> number(std::int64_t value) const {
        if (item_.scale > 0 || item_.scale < -Decimal::most_decimals) return std::nullopt;
        std::string text = fmt::format("{}", value);
        const bool negative = text.front() == '-';
        if (negative) text.erase(0, 1);
        const auto decimals = static_cast<std::size_t>(-item_.scale);
        if (text.size() <= decimals) text.insert(0, decimals + 1 - text.size(), '0');
        if (decimals > 0) text.insert(text.size() - decimals, ".");
        return (negative ? "-" : "") + text;
    }
    // By the client library's own calendar, in the years that it has.
    [[nodiscard]] std::optional<std::string> moment() const {
        constexpr ISC_DATE first = -678'575, last = 2'973'483;  // 1 January 1, 31 December 9999
        constexpr ISC_TIME midnight = 864'000'000;
        ISC_TIMESTAMP stamp{stored<ISC_DATE>(item_.offset), 0};
        if (item_.type == SQL_TIMESTAMP) stamp.timestamp_time = stored<ISC_TIME>(item_.offset + 4);
        if (stamp.timestamp_date < first || stamp.timestamp_date > last || stamp.timestamp_time >= midnight)
            return std::nullopt;
        std::tm parts{};
        isc_decode_timestamp(&stamp, &parts);
        std::string text =
            fmt::format("{:04}-{:02}-{:02}", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
        if (item_.type == SQL_TYPE_DATE) return text;
        return text + fmt::format(" {:02}:{:02}:{:02}.{:04}", parts.tm_hour, parts.tm_min, parts.tm_sec,
                                  stamp.timestamp_time % 10000);
    }
    // Of ASCII, where all encodings agree.
    [[nodiscard]] std::optional<std::string> plain_text() const {
        const bool varying = item_.type == SQL_VARYING;
        const auto* const bytes = reinterpret_cast<const char*>(row_.data()) + item_.offset;
        std::string text(bytes, item_.length);
        if (varying) {
            text.assign(bytes + 2, std::min<std::size_t>(stored<std::uint16_t>(item_.offset), item_.length));
        }
        if (item_.character_set == octets) {
            std::string digits;
            for (const char c : text) digits += fmt::format("{:02X}", static_cast<unsigned char>(c));
            return digits;
        }
        if (!typed::is_ascii(text)) return std::nullopt;
        if (!varying) text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }

    const sql::MessageItem& item_;
    const std::vector<std::byte>& row_;
};

// How a value that was read as a type is shown; nothing where that needs more than a line.
std::optional<std::string> shown(std::int64_t value) { return fmt::to_string(value); }
std::optional<std::string> shown(const Decimal& value) { return to_string(value); }
template <class T>
std::optional<std::string> shown(const T&) {
    return std::nullopt;
}

// A value as one type: it is read as that, or that is said to be wrong, the same each time.
template <class T>
void check_as(const Field& field, const std::optional<std::string>& text) {
    std::optional<T> value;
    if (!goes_well([&] { value = field.as<std::optional<T>>(); })) return;
    require(value.has_value() != field.is_null(), "what is not NULL is there");
    if (!value) {
        try {
            (void)field.as<T>();
            require(false, "NULL is no value");
        } catch (const SqlError& error) {
            require(error.sqlstate() == "22002", "NULL is said to be there");
        }
        return;
    }
    const auto as_text = shown(*value);
    if (as_text && text) require(*as_text == *text, "a number is the one that is shown");
}

std::string whole(BlobReader& blob) {
    std::string content;
    for (std::string_view piece; !(piece = blob.read()).empty();) content += piece;
    return content;
}

void check_blob(const Field& field, const sql::MessageItem& item, InventingClient& client) {
    ISC_QUAD id{};
    std::memcpy(&id, client.row.data() + item.offset, sizeof id);
    const std::string content = client.content_of(id);
    goes_well([&] {
        auto blob = field.as<BlobReader>();
        require(blob.size() == content.size(), "a blob is as long as its bytes");
        const std::string read = whole(blob);
        if (typed::is_ascii(content) || item.subtype != 1)
            require(read == content, "a blob has the bytes that came");
    });
}

void check_field(const Field& field, const sql::MessageItem& item, InventingClient& client, bool as_kept) {
    const Shown wanted(item, client.row);
    require(field.is_null() == wanted.is_null(), "NULL is told by its indicator");
    const bool is_text = item.type == SQL_TEXT || item.type == SQL_VARYING;
    std::optional<std::string> text;
    const bool is_shown = goes_well([&] { text = field.text(); });
    if (is_shown) {
        require(text.has_value() != field.is_null(), "every value is shown, and NULL is not");
        const auto expected = text ? wanted.text() : std::nullopt;
        require(!expected || *expected == *text, "a value is shown as it is");
        // Of blobs, and of what it writes out itself, the engine sees to it.
        const bool has_letters = is_text && item.character_set != ascii;
        require(as_kept || !has_letters || !text || typed::holds_utf8(*text), "what is shown is UTF-8");
    }
    // A text may have zeros before its number.
    const std::optional<std::string> number = is_text ? std::nullopt : text;
    check_as<bool>(field, text);
    check_as<std::int64_t>(field, number);
    check_as<Decimal>(field, number);
    check_as<double>(field, text);
    check_as<std::string>(field, text);
    check_as<Bytes>(field, text);
    check_as<std::chrono::year_month_day>(field, text);
    check_as<TimeOfDay>(field, text);
    check_as<Timestamp>(field, text);
    goes_well([&] { (void)field.as<std::int16_t>(); });
    if (item.type == SQL_BLOB && !field.is_null()) check_blob(field, item, client);
}

void read_rows(Statement& statement, std::span<const Parameter> values, InventingClient& client,
               bool as_kept) {
    std::size_t count = 0;
    std::optional<Field> earlier;
    for (const Row& row : statement.rows(values)) {
        require(row.size() == statement.columns().size(), "a row has all columns");
        require(++count <= most_rows, "no row comes from nowhere");
        require(!earlier || !goes_well([&] { (void)earlier->is_null(); }), "a field is of its row only");
        for (std::size_t i = 0; i < row.size(); ++i)
            check_field(row[i], client.layout.items()[i], client, as_kept);
        earlier = row[0];
    }
}

// Values for a statement, and what keeps their texts.
class Values {
  public:
    Values(std::size_t count, Transaction& work, Input& input) {
        if (input.below(16) == 0) ++count;
        for (; count > 0; --count) values_.push_back(made(work, input));
    }
    [[nodiscard]] const std::vector<Parameter>& all() const { return values_; }

  private:
    Parameter made(Transaction& work, Input& input) {
        switch (input.below(9)) {
            case 0:
                return std::nullopt;
            case 1:
                return input.flag();
            case 2:
                return input.number<std::int64_t>() >> input.below(64);
            case 3:
                return Decimal(input.number<std::int32_t>(), static_cast<int>(input.below(19)));
            case 4:
                return input.number<double>();
            case 5:
                return std::chrono::year_month_day(
                    std::chrono::sys_days(std::chrono::days(input.number<std::int32_t>() % 4'000'000)));
            case 6:
                return TimeOfDay(input.number<std::int32_t>());
            case 7: {
                BlobWriter blob(work);
                blob.write(input.text());
                return blob;
            }
            default:
                return std::string_view(texts_.emplace_back(input.text()));
        }
    }
    std::deque<std::string> texts_;
    std::vector<Parameter> values_;
};

void run(Statement& statement, Transaction& work, Input& input, InventingClient& client, bool as_kept) {
    const Values values(statement.parameter_count(), work, input);
    switch (input.below(4)) {
        case 0:
            statement.execute(values.all());
            break;
        case 1:
            (void)statement.maybe_one<std::optional<std::int64_t>, std::optional<std::string>>(values.all());
            break;
        default:
            read_rows(statement, values.all(), client, as_kept);
    }
}

void work_in(Transaction& work, Input& input, InventingClient& client) {
    constexpr std::size_t most_statements = 3;
    for (std::size_t left = input.below(most_statements + 1); left > 0 && !input.at_end(); --left) {
        goes_well([&] {
            const bool as_kept = input.flag();
            Statement statement = work.prepare("update ?", as_kept ? TextForm::as_kept : TextForm::utf8);
            goes_well([&] { run(statement, work, input, client, as_kept); });
            goes_well([&] { run(statement, work, input, client, as_kept); });
        });
    }
}

void use(zmFBConn& connection, Input& input, InventingClient& client) {
    constexpr std::string_view encodings[] = {"ISO-8859-1", "UTF-8", "CP1252", "CP850"};
    goes_well([&] { set_database_encoding(connection, encodings[input.below(std::size(encodings))]); });
    constexpr std::size_t most_transactions = 3;
    for (std::size_t left = most_transactions; left > 0 && !input.at_end(); --left) {
        goes_well([&] {
            Transaction work(connection, input.flag() ? Access::read_only : Access::read_write,
                             static_cast<Isolation>(input.below(3)));
            work_in(work, input, client);
            const std::size_t how = input.below(3);
            if (how == 0) goes_well([&] { work.commit(); });
            if (how == 1) goes_well([&] { work.roll_back(); });
            require(how == 2 || !work.active(), "a transaction that was ended has ended");
        });
    }
}

}  // namespace
}  // namespace zmfb::fuzz

void zmfb::fuzz::try_input(Input& input) {
    {
        InventingClient client(input);
        zmFBConn connection = zmFBConn::attached_as_it_is("invented:shop.fdb", "SYSDBA", "masterkey");
        if (connection.isconnected()) use(connection, input, client);
        connection = zmFBConn();
        require(client.open_transactions() == 0, "what was begun is ended");
    }
    require(InventedClient::referred_to() == 0, "what was handed out is given back");
}
