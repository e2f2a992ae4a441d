/// Pieces of pages for browsers.
#ifndef VELTRANE_COMMAND_HTML_H
#define VELTRANE_COMMAND_HTML_H

#include "QualityFigures.h"

#include <string>
#include <vector>

namespace veltrane
{

/// A cell of a table: text, or markup that somebody has made.
struct HtmlCell
{
    HtmlCell(const std::string& words);                           // NOLINT: a cell is what is in it
    HtmlCell(const char* words) : HtmlCell(std::string(words)) {} // NOLINT
    static HtmlCell number(double value, int digits = 4);
    static HtmlCell count(long long value);

    std::string markup;
    bool isNumber = false;
};

using HtmlRow = std::vector<HtmlCell>;

/// The first cell of each row names it. Tables that are wider than the page can be moved.
std::string htmlTable(const std::string& caption, const HtmlRow& head, const std::vector<HtmlRow>& rows);

/// A heading and what stands under it.
std::string htmlSection(const std::string& heading, const std::string& markup);

std::string htmlParagraph(const std::string& words);

/// Something that is shown on demand.
std::string htmlDetails(const std::string& summary, const std::string& markup);

/// Bars, the edges beneath them, and the same as a table for those who do not see them.
///
/// \param quantity  what is counted: "difference as part of the largest magnitude"
std::string htmlHistogram(const std::string& caption, const std::string& quantity, const Histogram& histogram);

/// A whole page that needs nothing else: in light and dark, on screen and on paper.
///
/// \param verdict  its heading, "good: ..." or "doubtful: ..."
std::string htmlPage(const std::string& title, const std::string& verdict, bool isGood, const std::string& markup);

} // namespace veltrane

#endif
