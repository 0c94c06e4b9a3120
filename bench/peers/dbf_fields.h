/// Reading DBF records as somebody does who writes an import by hand.
#pragma once

#include <istream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace zmfb::bench {

class DbfRecord {
  public:
    /// `lengths` are the lengths of the fields, in their order.
    explicit DbfRecord(const nlohmann::json& lengths) {
        std::size_t offset = 1;
        for (const std::size_t length : lengths.get<std::vector<std::size_t>>()) {
            fields_.push_back({offset, length});
            offset += length;
        }
        bytes_.resize(offset);
    }

    /// The next record; false at the end.
    bool read(std::istream& file) {
        file.read(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
        return static_cast<std::size_t>(file.gcount()) == bytes_.size();
    }
    /// A field without its outer blanks.
    [[nodiscard]] std::string trimmed(std::size_t field) const {
        const std::string text = bytes_.substr(fields_[field].offset, fields_[field].length);
        const std::size_t begin = text.find_first_not_of(' ');
        return begin == text.npos ? "" : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
    }
    /// YYYYMMDD as YYYY-MM-DD.
    [[nodiscard]] std::string iso_date(std::size_t field) const {
        const std::string text = bytes_.substr(fields_[field].offset, fields_[field].length);
        return text.substr(0, 4) + '-' + text.substr(4, 2) + '-' + text.substr(6, 2);
    }

  private:
    struct Field {
        std::size_t offset;
        std::size_t length;
    };
    std::vector<Field> fields_;
    std::string bytes_;
};

}  // namespace zmfb::bench
