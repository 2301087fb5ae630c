#include "store/statement.h"

#include <span>

namespace ostrell {
namespace {

class ArgumentReader {
 public:
  explicit ArgumentReader(std::span<const BindArgument> arguments) : rest(arguments) {}

  // The next argument; null when there is none, or it is of another kind.
  template <class Kind>
  const Kind* Take() {
    if (rest.empty()) {
      return nullptr;
    }
    const BindArgument& argument = rest.front();
    rest = rest.subspan(1);
    return std::get_if<Kind>(&argument);
  }

 private:
  std::span<const BindArgument> rest;
};

int BindText(sqlite3_stmt* statement, int parameter, ArgumentReader& arguments) {
  const auto* const text = arguments.Take<const char*>();
  const auto* const length = arguments.Take<int32_t>();
  return text != nullptr && length != nullptr
             ? sqlite3_bind_text(statement, parameter, *text, *length, SQLITE_STATIC)
             : SQLITE_ERROR;
}

int BindBlob(sqlite3_stmt* statement, int parameter, ArgumentReader& arguments) {
  const auto* const data = arguments.Take<const void*>();
  const auto* const length = arguments.Take<int32_t>();
  return data != nullptr && length != nullptr && *length >= 0
             ? sqlite3_bind_blob(statement, parameter, *data, *length, SQLITE_STATIC)
             : SQLITE_ERROR;
}

int BindLetter(sqlite3_stmt* statement, int parameter, char letter, ArgumentReader& arguments) {
  switch (letter) {
    case 'I': {
      const auto* const number = arguments.Take<int64_t>();
      return number != nullptr ? sqlite3_bind_int64(statement, parameter, *number) : SQLITE_ERROR;
    }
    case 'i': {
      const auto* const number = arguments.Take<int32_t>();
      return number != nullptr ? sqlite3_bind_int(statement, parameter, *number) : SQLITE_ERROR;
    }
    case 's':
      return BindText(statement, parameter, arguments);
    case 'b':
      return BindBlob(statement, parameter, arguments);
    case 'N':
      return sqlite3_bind_null(statement, parameter);
    default:
      return SQLITE_ERROR;
  }
}

}  // namespace

Statement Prepare(sqlite3* db, const char* sql, int length) {
  Statement statement;
  sqlite3_prepare_v2(db, sql, length, statement.Receive(), nullptr);
  return statement;
}

int BindArgs(sqlite3_stmt* statement, std::string_view format,
             std::initializer_list<BindArgument> arguments) {
  ArgumentReader reader({arguments.begin(), arguments.size()});
  int parameter = 0;
  for (const char letter : format) {
    const int result = BindLetter(statement, ++parameter, letter, reader);
    if (result != SQLITE_OK) {
      return result;
    }
  }
  return SQLITE_OK;
}

int ExecBound(sqlite3* db, const char* sql, int length, std::string_view format,
              std::initializer_list<BindArgument> arguments) {
  const Statement statement = Prepare(db, sql, length);
  return statement && BindArgs(statement.Get(), format, arguments) == SQLITE_OK &&
                 sqlite3_step(statement.Get()) == SQLITE_DONE
             ? 1
             : 0;
}

std::optional<bool> ColumnEquals(sqlite3_stmt* row, int column, std::string_view text) {
  if (sqlite3_column_type(row, column) == SQLITE_NULL) {
    return false;
  }
  const auto* const stored = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return stored != nullptr
             ? std::optional(std::string_view(stored, static_cast<size_t>(sqlite3_column_bytes(
                                                          row, column))) == text)
             : std::nullopt;
}

}  // namespace ostrell
