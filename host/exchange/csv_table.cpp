#include "host/exchange/csv_table.h"

#include "host/exchange/exchange_text.h"

namespace orvane::host {

bool CsvTable::next(Row& row) {
    row.clear();
    do {
        line_ = input_.line();
        if (input_.peek() == InputFile::end) return false;
    } while (takeLineEnd());
    while (true) {
        row.push_back(field());
        if (row.back() && !isUtf8(*row.back())) throw InputProblem(line_, "the text is not UTF-8");
        if (takeLineEnd()) return true;
        input_.take();  // the comma
    }
}

std::optional<std::string> CsvTable::field() {
    std::string result;
    if (input_.peek() == '"') {
        result = quotedField();
        if (!atFieldEnd()) throw InputProblem(input_.line(), "text follows a closing quotation mark");
        return result;
    }
    while (!atFieldEnd()) {
        if (input_.peek() == '"')
            throw InputProblem(input_.line(),
                               "a quotation mark stands within a field that does not begin with one");
        append(result);
    }
    return result.empty() ? std::nullopt : std::optional(result);
}

std::string CsvTable::quotedField() {
    const std::size_t begin = input_.line();
    std::string result;
    input_.take();
    while (true) {
        if (input_.peek() == InputFile::end) throw InputProblem(begin, "a quotation mark is not closed");
        if (input_.peek() == '"') {
            input_.take();
            if (input_.peek() != '"') return result;
        }
        append(result);
    }
}

void CsvTable::append(std::string& field) {
    if (field.size() == InputFile::longestPiece) throw InputProblem(line_, "a field is too long");
    field += static_cast<char>(input_.peek());
    input_.take();
}

bool CsvTable::atFieldEnd() {
    const int next = input_.peek();
    return next == ',' || next == '\n' || next == '\r' || next == InputFile::end;
}

bool CsvTable::takeLineEnd() {
    if (input_.peek() == InputFile::end) return true;
    if (input_.peek() == '\r') {
        input_.take();
        if (input_.peek() != '\n') throw InputProblem(input_.line(), "a carriage return stands alone");
    }
    if (input_.peek() != '\n') return false;
    input_.take();
    return true;
}

}  // namespace orvane::host
