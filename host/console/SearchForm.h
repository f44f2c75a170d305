#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quorvex::console
{

/// Values under names, for an application: as the command line gives them, and as they travel in a form.

/// What is wrong with an application's name, which becomes a part of an address and of a form as it is; empty when
/// nothing is.
std::string ComplaintAboutApp(const std::string& app);

/// What is wrong with a NAME=VALUE; empty when nothing is. The name goes out as it is, and so it must not hold what
/// means something in a form. The value may be any text.
std::string ComplaintAboutField(const std::string& field);

/// Names and values by turns, as the module takes them.
/// @param fields texts that there is no complaint about
std::vector<std::string> NamesAndValues(const std::vector<std::string>& fields);

/// The form in which names and values travel, its values percent-encoded.
/// @param namesAndValues by turns
std::string FormOf(const std::vector<std::string>& namesAndValues);

/// The module cuts off what does not fit into a form; so nothing longer is sent.
/// @param namesAndValues by turns
/// @throws Failure
void CheckThatFormHolds(const std::string& app, const std::vector<std::string>& namesAndValues);

} // namespace quorvex::console
