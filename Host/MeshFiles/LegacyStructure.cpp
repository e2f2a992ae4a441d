#include "LegacyStructure.h"

#include "DataSetReader.h"
#include "FileErrors.h"
#include "LegacyScanner.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace veltrane
{
namespace
{

/// What stands in the line that begins the cells.
struct CellSection
{
    long long first;
    long long second;
};

/// The kinds of arrays that need no further word than their names and types, with their components.
constexpr std::array<std::pair<std::string_view, long long>, 7> plainKinds{{
    {"vectors", 3},
    {"normals", 3},
    {"tensors", 9},
    {"tensors6", 6},
    {"global_ids", 1},
    {"pedigree_ids", 1},
    {"edge_flags", 1},
}};

/// Goes through a file once.
class LegacyCheck
{
public:
    explicit LegacyCheck(const std::filesystem::path& path) : path_(path), scanner_(path) {}

    void run()
    {
        try
        {
            for (std::string key = scanner_.keyword(); !key.empty(); key = scanner_.keyword())
            {
                checkSection(key);
            }
        }
        catch (const LegacyScanner::Lost&)
        {
            if (scanner_.isAtEnd())
            {
                throw BadFile(text("cannot read ", quoted(path_), ": it ends too early"));
            }
            throw;
        }
        catch (const LegacyScanner::MissingValues&)
        {
            throw BadFile(text("cannot read ", quoted(path_), ": ", array_,
                               " lacks values, or has some that are not finite numbers"));
        }
    }

private:
    void checkSection(const std::string& key)
    {
        if (key == "dataset")
        {
            scanner_.word();
        }
        else if (key == "points")
        {
            array_ = "the section POINTS";
            pointCount_ = itemCount("POINTS");
            scanner_.array(pointCount_, 3);
        }
        else if (key == "cells")
        {
            checkCells();
        }
        else if (key == "cell_types")
        {
            array_ = "the section CELL_TYPES";
            cellCount_ = itemCount("CELL_TYPES");
            scanner_.arrayOf("int", cellCount_, 1);
        }
        else if (key == "point_data" || key == "cell_data")
        {
            place_ = key == "point_data" ? "point" : "cell";
            tupleCount_ = itemCount(place_ == "point" ? "POINT_DATA" : "CELL_DATA");
            checkTupleCount(place_ == "point" ? pointCount_ : cellCount_);
        }
        else if (key == "field")
        {
            checkField();
        }
        else
        {
            checkAttribute(key);
        }
    }

    /// Of a section; throws BadFile if there cannot be so many.
    long long itemCount(const char* section)
    {
        const long long count = scanner_.integer();
        if (count < 0 || count > INT_MAX)
        {
            throw BadFile(text("cannot read ", quoted(path_), ": its section '", section, " ", count,
                               "' has more than can be counted, or less than nothing"));
        }
        return count;
    }

    void checkTupleCount(long long expected) const
    {
        if (tupleCount_ != expected)
        {
            throw BadFile(text("cannot read ", quoted(path_), ": it has ", place_, " data for ", tupleCount_, " ",
                               place_, "s, but there are ", expected));
        }
    }

    void checkCells()
    {
        array_ = "the section CELLS";
        const long long first = itemCount("CELLS");
        const CellSection section{first, scanner_.count()};
        constexpr int firstVersionWithOffsets = 5;
        if (scanner_.version() < firstVersionWithOffsets)
        {
            checkRecords(section);
        }
        else
        {
            checkOffsets(section);
        }
    }

    /// Per cell the number of its points, and these.
    void checkRecords(const CellSection& section)
    {
        constexpr int byteCount = 4;
        scanner_.beginSection();
        long long left = section.second;
        for (long long cell = 0; cell < section.first; ++cell)
        {
            const long long pointCount = scanner_.integer(byteCount);
            left -= 1;
            if (pointCount < 0 || pointCount > left)
            {
                throwBadCells(section);
            }
            left -= pointCount;
            for (long long i = 0; i < pointCount; ++i)
            {
                scanner_.integer(byteCount);
            }
        }
        if (left != 0)
        {
            throwBadCells(section);
        }
    }

    /// Where each cell's points begin, and the end of the last one's; then the points.
    void checkOffsets(const CellSection& section)
    {
        expectKeyword("offsets");
        const int byteCount = scanner_.keyword().find("int64") != std::string::npos ? 8 : 4;
        scanner_.beginSection();
        long long last = 0;
        for (long long i = 0; i < section.first; ++i)
        {
            const long long offset = scanner_.integer(byteCount);
            const bool isEnd = i + 1 == section.first;
            if (offset < last || (i == 0 && offset != 0) || (isEnd && offset != section.second))
            {
                throwBadCells(section);
            }
            last = offset;
        }
        expectKeyword("connectivity");
        scanner_.array(section.second, 1);
    }

    [[noreturn]] void throwBadCells(const CellSection& section) const
    {
        throw BadFile(text("cannot read ", quoted(path_), ": its cells do not fill the section 'CELLS ", section.first,
                           " ", section.second, "'"));
    }

    void expectKeyword(std::string_view keyword)
    {
        if (scanner_.keyword() != keyword)
        {
            throw LegacyScanner::Lost();
        }
    }

    /// Several arrays, each with all about it; of points, of cells or, before these, of the file.
    void checkField()
    {
        array_ = "the section FIELD";
        scanner_.word(); // the name of the whole
        const long long arrayCount = scanner_.count();
        for (long long i = 0; i < arrayCount; ++i)
        {
            const std::string name = scanner_.word();
            if (name.empty())
            {
                throw LegacyScanner::MissingValues();
            }
            if (name != "NULL_ARRAY")
            {
                array_ = text("array '", name, "'");
                const long long componentCount = this->componentCount();
                const long long tupleCount = scanner_.count();
                scanner_.array(tupleCount, componentCount);
            }
            array_ = "the section FIELD";
        }
    }

    long long componentCount()
    {
        const long long count = scanner_.integer();
        return count >= 0 ? count : throw LegacyScanner::MissingValues();
    }

    void checkAttribute(const std::string& key)
    {
        const std::string name = scanner_.word();
        array_ = text("array '", name, "'");
        if (key == "scalars")
        {
            checkScalars();
        }
        else if (key == "color_scalars")
        {
            const long long componentCount = scanner_.count();
            scanner_.arrayOf("unsigned_char", tupleCount_, componentCount);
        }
        else if (key == "texture_coordinates")
        {
            const long long componentCount = scanner_.count();
            scanner_.array(tupleCount_, componentCount);
        }
        else if (key == "lookup_table")
        {
            constexpr long long componentCount = 4;
            scanner_.arrayOf("unsigned_char", scanner_.count(), componentCount);
        }
        else
        {
            const auto* found = std::ranges::find(plainKinds, key, &std::pair<std::string_view, long long>::first);
            if (found == plainKinds.end())
            {
                throw LegacyScanner::Lost();
            }
            scanner_.array(tupleCount_, found->second);
        }
    }

    void checkScalars()
    {
        const std::string type = scanner_.keyword();
        long long componentCount = 1;
        std::string key = scanner_.keyword();
        if (key != "lookup_table")
        {
            componentCount = std::strtoll(key.c_str(), nullptr, 10);
            expectKeyword("lookup_table");
        }
        scanner_.word(); // the table's name
        scanner_.arrayOf(type, tupleCount_, componentCount);
    }

    std::filesystem::path path_;
    LegacyScanner scanner_;
    std::string array_; ///< what is gone through
    std::string place_; ///< "point" or "cell"
    long long pointCount_ = 0;
    long long cellCount_ = 0;
    long long tupleCount_ = 0;
};

} // namespace

void checkLegacyStructure(const std::filesystem::path& path)
{
    try
    {
        LegacyCheck(path).run();
    }
    catch (const LegacyScanner::Lost&)
    {
        return; // VTK's reader gets lost there, too, and says so
    }
}

} // namespace veltrane
