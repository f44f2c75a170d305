#pragma once

#include "Expect.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvex::fuzz
{

/// The parts of a multipart body, read as its grammar says and with no knowledge of the forms.
class FormReader
{
public:
    struct Part
    {
        std::string_view head;
        std::string_view content;
    };

    /// @param boundary a token that no value holds
    FormReader(std::string_view body, const std::string& boundary)
    {
        const std::string delimiter = "\r\n--" + boundary;
        const std::string_view first = std::string_view(delimiter).substr(2);
        Expect(body.starts_with(first), "a form begins with its boundary");
        body.remove_prefix(first.size());
        while (!body.starts_with("--"))
        {
            Expect(body.starts_with("\r\n"), "a boundary ends its line");
            body.remove_prefix(2);
            const std::size_t end = body.find(delimiter);
            Expect(end != std::string_view::npos, "a part ends at the boundary");
            const std::string_view part = body.substr(0, end);
            const std::size_t blank = part.find("\r\n\r\n");
            m_parts.push_back(blank == std::string_view::npos ? Part{part, {}}
                                                              : Part{part.substr(0, blank), part.substr(blank + 4)});
            body.remove_prefix(end + delimiter.size());
        }
        Expect(body == "--\r\n", "a form ends with its last boundary");
    }

    const std::vector<Part>& Parts() const { return m_parts; }

    /// The content of the part with this name.
    std::string_view Value(const std::string& name) const
    {
        for (const Part& part : m_parts)
        {
            const std::string_view disposition = part.head.substr(0, part.head.find("\r\n"));
            if (disposition.find("; name=\"" + name + "\"") != std::string_view::npos)
            {
                return part.content;
            }
        }
        Expect(false, "a form has the parts that it is made of");
        return {};
    }

private:
    std::vector<Part> m_parts;
};

} // namespace quorvex::fuzz
