#include "hostile/Subjects.h"

namespace hostile
{

std::vector<Subject> allSubjects()
{
    std::vector<Subject> all;
    for (const auto& subjects : {cutSubjects(), lengthSubjects(), statusSubjects(), compressionSubjects(),
                                 headerSubjects(), jsonSubjects(), breakSubjects()})
        all.insert(all.end(), subjects.begin(), subjects.end());
    return all;
}

} // namespace hostile
