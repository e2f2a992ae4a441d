#include "Html.h"

#include "Markup.h"
#include "Report.h"
#include "Text.h"

#include <algorithm>
#include <cmath>

namespace veltrane
{
namespace
{

constexpr const char* style = R"(
:root { color-scheme: light dark; --page: #fff; --text: #1a1a1a; --soft: #5c5c5c; --line: #d5d5d5; --panel: #f5f6f7;
  --good: #0b6e3b; --doubtful: #b3261e; --bar: #2b6ca3; }
@media (prefers-color-scheme: dark) { :root { --page: #15171a; --text: #e8e8e8; --soft: #a8adb3; --line: #3b4046;
  --panel: #1f2327; --good: #6fd39b; --doubtful: #ff8a80; --bar: #6aaee6; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--text); font: 16px/1.5 system-ui, sans-serif; }
main { max-width: 76rem; margin: 0 auto; padding: 1.5rem; }
h1 { font-size: 1.5rem; line-height: 1.35; margin: 0 0 .5rem; padding: .75rem 1rem; border-left: .4rem solid;
  background: var(--panel); }
h1.good { border-color: var(--good); } h1.doubtful { border-color: var(--doubtful); }
h1 b { color: var(--good); } h1.doubtful b { color: var(--doubtful); }
h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; border-bottom: 1px solid var(--line); }
.scroll { overflow-x: auto; margin: .5rem 0 1rem; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
caption { text-align: left; color: var(--soft); padding-bottom: .25rem; }
th, td { text-align: left; padding: .15rem .9rem .15rem 0; border-bottom: 1px solid var(--line); vertical-align: top; }
th.n, td.n { text-align: right; white-space: nowrap; }
tbody th { font-weight: 600; }
thead th { color: var(--soft); font-weight: 600; }
td.missed { color: var(--doubtful); font-weight: 600; }
figure { margin: .5rem 0 1rem; } figcaption { color: var(--soft); }
figure svg { display: block; width: 100%; height: auto; }
figure.histogram svg { max-width: 44rem; }
.choice { display: flex; flex-wrap: wrap; gap: 1rem; border: 0; padding: 0; margin: .5rem 0; }
select { font: inherit; color: inherit; background: var(--panel); border: 1px solid var(--line); padding: .2rem .4rem; }
code, pre { font: .9em/1.5 ui-monospace, monospace; overflow-wrap: anywhere; white-space: pre-wrap; }
pre { background: var(--panel); padding: .75rem 1rem; }
@media print { :root { --page: #fff; --text: #000; --soft: #444; --line: #bbb; --panel: #f2f2f2; --good: #0b6e3b;
  --doubtful: #b3261e; --bar: #2b6ca3; } main { max-width: none; padding: 0; } body { font-size: 10pt; }
  .choice { display: none; } figure, tr { break-inside: avoid; } h2 { break-after: avoid; } .scroll { overflow: visible; } }
)";

// Without it everything is shown.
constexpr const char* script = R"(
for (const choice of document.querySelectorAll('[data-choice]')) {
  const shown = document.querySelectorAll('[data-of="' + choice.dataset.choice + '"]');
  const lists = [...choice.querySelectorAll('select')];
  const update = () => { for (const item of shown)
    item.hidden = !lists.every(list => item.dataset[list.name] === undefined || item.dataset[list.name] === list.value); };
  lists.forEach(list => list.addEventListener('change', update));
  choice.hidden = false;
  update();
}
)";

std::string cellMarkup(const HtmlCell& cell, const char* tag, const char* scope)
{
    return text("<", tag, scope, cell.isNumber ? " class=\"n\"" : "", ">", cell.markup, "</", tag, ">");
}

std::string edgeText(double edge)
{
    return inDigits(2, edge);
}

} // namespace

HtmlCell::HtmlCell(const std::string& words) : markup(escaped(words)) {}

HtmlCell HtmlCell::number(double value, int digits)
{
    HtmlCell cell(std::isnan(value) ? std::string("–") : inDigits(digits, value));
    cell.isNumber = true;
    return cell;
}

HtmlCell HtmlCell::count(long long value)
{
    HtmlCell cell(text(value));
    cell.isNumber = true;
    return cell;
}

std::string htmlTable(const std::string& caption, const HtmlRow& head, const std::vector<HtmlRow>& rows)
{
    std::string table = "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"" + escaped(caption) +
                        "\"><table><caption>" + escaped(caption) + "</caption>\n<thead><tr>";
    for (std::size_t i = 0; i < head.size(); ++i)
    {
        HtmlCell cell = head[i];
        cell.isNumber = !rows.empty() && i < rows.front().size() && rows.front()[i].isNumber;
        table += cellMarkup(cell, "th", " scope=\"col\"");
    }
    table += "</tr></thead>\n<tbody>\n";
    for (const HtmlRow& row : rows)
    {
        table += "<tr>";
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            table += i == 0 ? cellMarkup(row[i], "th", " scope=\"row\"") : cellMarkup(row[i], "td", "");
        }
        table += "</tr>\n";
    }
    return table + "</tbody></table></div>\n";
}

std::string htmlSection(const std::string& heading, const std::string& markup)
{
    return text("<section>\n<h2>", escaped(heading), "</h2>\n", markup, "</section>\n");
}

std::string htmlParagraph(const std::string& words)
{
    return text("<p>", escaped(words), "</p>\n");
}

std::string htmlDetails(const std::string& summary, const std::string& markup)
{
    return text("<details><summary>", escaped(summary), "</summary>\n", markup, "</details>\n");
}

std::string htmlHistogram(const std::string& caption, const std::string& quantity, const Histogram& histogram)
{
    if (histogram.counts.empty())
    {
        return "";
    }
    constexpr double width = 700;
    constexpr double height = 180;
    constexpr double bottom = 150;
    constexpr double top = 20;
    const long long most = std::max(1LL, std::ranges::max(histogram.counts));
    const double step = width / static_cast<double>(histogram.counts.size());
    std::string bars;
    std::vector<HtmlRow> rows;
    for (std::size_t i = 0; i < histogram.counts.size(); ++i)
    {
        const long long count = histogram.counts[i];
        const double x = step * static_cast<double>(i);
        const double size = (bottom - top) * static_cast<double>(count) / static_cast<double>(most);
        bars += text("<rect x=\"", x + 1, "\" y=\"", bottom - size, "\" width=\"", step - 2, "\" height=\"", size,
                     "\" fill=\"var(--bar)\"/>");
        if (count > 0)
        {
            bars += text("<text x=\"", x + step / 2, "\" y=\"", bottom - size - 5,
                         "\" text-anchor=\"middle\" font-size=\"12\">", count, "</text>");
        }
        const bool isTold = histogram.counts.size() <= 10 || i % 2 == 0;
        bars += isTold ? text("<text x=\"", std::max(x, 10.0), "\" y=\"", bottom + 18,
                              "\" text-anchor=\"middle\" font-size=\"12\">", edgeText(histogram.edges[i]), "</text>")
                       : "";
        rows.push_back(
            {text(edgeText(histogram.edges[i]), " to ", edgeText(histogram.edges[i + 1])), HtmlCell::count(count)});
    }
    return text("<figure class=\"histogram\"><figcaption>", escaped(caption),
                "</figcaption>\n<svg role=\"img\" viewBox=\"0 0 ", width, " ", height + 20, "\" aria-label=\"",
                escaped(text(caption, ", as the table below says")), "\"><g fill=\"currentColor\">", bars, "<text x=\"",
                width / 2, "\" y=\"", height + 10, "\" text-anchor=\"middle\" font-size=\"13\">", escaped(quantity),
                "</text></g><line x1=\"0\" x2=\"", width, "\" y1=\"", bottom, "\" y2=\"", bottom,
                "\" stroke=\"currentColor\"/></svg>\n",
                htmlDetails("Numbers", htmlTable(caption, {quantity, "count"}, rows)), "</figure>\n");
}

std::string htmlPage(const std::string& title, const std::string& verdict, bool isGood, const std::string& markup)
{
    const std::size_t colon = std::min(verdict.find(':'), verdict.size());
    return text("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>",
                escaped(title), "</title>\n<style>", style, "</style>\n</head>\n<body>\n<main>\n<h1 class=\"",
                isGood ? "good" : "doubtful", "\"><b>", escaped(verdict.substr(0, colon)), "</b>",
                escaped(verdict.substr(colon)), "</h1>\n", markup, "</main>\n<script>", script,
                "</script>\n</body>\n</html>\n");
}

} // namespace veltrane
