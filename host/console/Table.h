#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace quorvex::console
{

/// Rows of texts in columns. A title that ends with '>' aligns its column to the right.
class Table
{
public:
    Table(std::initializer_list<std::string> titles);

    /// @param cells as many as there are titles
    void Add(std::vector<std::string> cells);

    /// The titles and the rows, one line each; empty when there are no rows.
    std::string Text() const;

private:
    std::string Line(const std::vector<std::string>& cells) const;

    std::vector<std::string> m_titles;
    std::vector<bool> m_isRight;
    std::vector<std::size_t> m_widths;
    std::vector<std::vector<std::string>> m_rows;
};

} // namespace quorvex::console
