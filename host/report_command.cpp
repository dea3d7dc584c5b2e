#include <cmath>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/date_range.h"
#include "host/html/report_page.h"
#include "host/output_file.h"
#include "host/presence_texts.h"
#include "host/reading_platform.h"
#include "host/terminal.h"
#include "host/window_use.h"
#include "reporting/orvane_group_for_range.h"

namespace orvane::host {

namespace {

using nlohmann::ordered_json;

class Report {
  public:
    Report(std::vector<Ref<RangeItem>> items, const ReportOptions& options)
        : items_(std::move(items)), options_(options) {
        for (const Ref<RangeItem>& item : items_) total_ += item->duration();
    }

    void printJson() const {
        auto list = ordered_json::array();
        for (const Ref<RangeItem>& item : items_) list.push_back(json(*item));
        ordered_json root;
        root["total"] = decimalText(total_);
        root["items"] = std::move(list);
        print(root);
    }

    /// Comma-separated values (RFC 4180): one line an application, or a window.
    void printCsv() const {
        std::cout << "group,application,name," << (options_.windows ? "window," : "") << "seconds\r\n";
        for (const Ref<RangeItem>& item : items_) {
            if (!item->isGroup()) printCsv("", *item);
            for (const Ref<OrvaneAppForRange>& app : item->appsForRange())
                printCsv(item->name().value_or(""), *app);
        }
    }

    void printTables() const {
        std::vector<std::vector<std::string>> rows;
        for (const Ref<RangeItem>& item : items_) {
            if (item->duration() == DecimalSeconds(0)) continue;
            add(rows, *item, "");
            for (const Ref<OrvaneAppForRange>& app : item->appsForRange()) add(rows, *app, "  ");
        }
        if (rows.empty()) {
            std::cout << "Nothing was recorded in this range.\n";
            return;
        }
        printTable({"", "NAME", "TIME", "SHARE", ""}, rows, {2, 3});
        std::cout << "Total " << clockText(total_) << '\n';
    }

  private:
    ordered_json json(const RangeItem& item) const {
        ordered_json result;
        result["kind"] = item.isGroup() ? "group" : "app";
        result["name"] = jsonText(item.name());
        result["identifier"] = jsonText(item.identifier());
        result["color"] = jsonText(item.color());
        result["duration"] = decimalText(item.duration());
        if (item.isGroup()) {
            result["applications"] = ordered_json::array();
            for (const Ref<OrvaneAppForRange>& app : item.appsForRange())
                result["applications"].push_back(json(*app));
        } else if (options_.windows) {
            result["windows"] = ordered_json::array();
            for (const WindowUse& window : windowsOf(item))
                result["windows"].push_back(
                    {{"title", window.title}, {"duration", decimalText(window.duration)}});
        }
        return result;
    }

    static std::string field(std::string_view text) {
        if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
        std::string result = "\"";
        for (const char character : text) result += character == '"' ? "\"\"" : std::string(1, character);
        return result + "\"";
    }

    void printCsv(std::string_view group, const RangeItem& app) const {
        const std::string start = field(group) + "," + field(app.identifier().value_or("")) + "," +
                                  field(app.name().value_or("")) + ",";
        if (!options_.windows) {
            std::cout << start << decimalText(app.duration()) << "\r\n";
            return;
        }
        for (const WindowUse& window : windowsOf(app))
            std::cout << start << field(window.title) << "," << decimalText(window.duration) << "\r\n";
    }

    void add(std::vector<std::vector<std::string>>& rows, const RangeItem& item,
             const std::string& indent) const {
        const std::string name = item.name().value_or(item.identifier().value_or("?"));
        rows.push_back({swatch(item.colorValue()), indent + displayText(name, 40), clockText(item.duration()),
                        share(item.duration()), bar(item.duration())});
        if (item.isGroup() || !options_.windows) return;
        for (const WindowUse& window : windowsOf(item))
            rows.push_back(
                {"", indent + "  " + (window.title.empty() ? "(no title)" : displayText(window.title, 60)),
                 clockText(window.duration), share(window.duration), ""});
    }

    double portion(DecimalSeconds duration) const {
        return total_.count() > 0
                   ? static_cast<double>(duration.count()) / static_cast<double>(total_.count())
                   : 0;
    }
    std::string share(DecimalSeconds duration) const {
        char text[16];
        std::snprintf(text, sizeof text, "%.0f %%", portion(duration) * 100);
        return text;
    }
    std::string bar(DecimalSeconds duration) const {
        constexpr double widest = 24;
        std::string result;
        for (int i = 0; i < std::lround(portion(duration) * widest); ++i) result += "█";
        return result;
    }

    std::vector<Ref<RangeItem>> items_;
    ReportOptions options_;
    DecimalSeconds total_{0};
};

int writeFile(const std::string& text, const std::filesystem::path& file) {
    OutputFile output(file, true);
    output.write(text);
    if (output.finish()) return exitSuccess;
    std::cerr << "orvane: " << output.problem() << '\n';
    return exitFailure;
}

}  // namespace

int runReport(const ReportOptions& options) {
    OpenStore store(options.common.store);
    std::string problem;
    const Date now = Platform::current().clock().now();
    const auto range = parseDateRange(options.range, now, problem);
    if (!range) {
        std::cerr << "orvane: " << problem << '\n';
        return exitUsage;
    }
    ManagedObjectContext* const context = store.context();
    if (store.exists() && !context) return exitFailure;
    auto items =
        context ? store.tracker().itemsFromDate(range->from, range->to) : std::vector<Ref<RangeItem>>();
    // Nothing is said about time that could not be read.
    if (store.readStatus() != exitSuccess) return exitFailure;
    if (options.html) {
        usePresenceTexts();
        const std::string page = reportPage({std::move(items), *range, now, options.windows, context});
        return store.readStatus() == exitSuccess ? writeFile(page, *options.html) : exitFailure;
    }
    const Report report(std::move(items), options);
    if (options.common.json)
        report.printJson();
    else if (options.csv)
        report.printCsv();
    else
        report.printTables();
    return store.readStatus();
}

}  // namespace orvane::host
