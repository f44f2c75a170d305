#include "Table.h"

#include "Text.h"

#include <algorithm>

namespace quorvex::console
{

Table::Table(std::initializer_list<std::string> titles) : m_titles(titles)
{
    for (std::string& title : m_titles)
    {
        m_isRight.push_back(title.ends_with('>'));
        if (m_isRight.back())
            title.pop_back();
        m_widths.push_back(WidthOf(title));
    }
}

void Table::Add(std::vector<std::string> cells)
{
    for (std::size_t i = 0; i < cells.size(); ++i)
    {
        cells[i] = Printable(cells[i]);
        m_widths[i] = std::max(m_widths[i], WidthOf(cells[i]));
    }
    m_rows.push_back(std::move(cells));
}

std::string Table::Text() const
{
    if (m_rows.empty())
        return {};
    std::string text = Line(m_titles);
    for (const auto& row : m_rows)
        text += Line(row);
    return text;
}

std::string Table::Line(const std::vector<std::string>& cells) const
{
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i)
    {
        const std::string padding(m_widths[i] - WidthOf(cells[i]), ' ');
        line += (i == 0 ? "" : "  ") + (m_isRight[i] ? padding + cells[i] : cells[i] + padding);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line + '\n';
}

} // namespace quorvex::console
