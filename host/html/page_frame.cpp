#include "host/html/page_frame.h"

#include <glib.h>

#include "host/html/page_script.h"
#include "host/html/page_style.h"

namespace orvane::host {

namespace {

/// The source expression of Content Security Policy Level 3 that admits this script and no other.
std::string sourceExpression(const std::string& script) {
    GChecksum* const checksum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(checksum, reinterpret_cast<const guchar*>(script.data()),
                      static_cast<gssize>(script.size()));
    guint8 digest[32];
    gsize length = sizeof digest;
    g_checksum_get_digest(checksum, digest, &length);
    g_checksum_free(checksum);
    gchar* const encoded = g_base64_encode(digest, length);
    std::string expression = "'sha256-" + std::string(encoded) + "'";
    g_free(encoded);
    return expression;
}

}  // namespace

std::string framedPage(const PageHeading& heading, const Markup& sections, const std::string& footer) {
    const std::string script = pageScript;
    Markup page;
    page.html("<!DOCTYPE html>\n<html lang=en>\n<head>\n<meta charset=utf-8>\n");
    page.html("<meta http-equiv=Content-Security-Policy content=\"default-src 'none'; ");
    page.html("style-src 'unsafe-inline'; script-src ").html(sourceExpression(script));
    page.html("; base-uri 'none'; form-action 'none'\">\n<meta name=referrer content=no-referrer>\n");
    page.html("<meta name=viewport content=\"width=device-width, initial-scale=1\">\n");
    page.html("<meta name=color-scheme content=\"light dark\">\n<title>").text(heading.title);
    page.html(" – Orvane</title>\n<style>").html(pageStyle).html("</style>\n</head>\n<body>\n<header>\n");
    page.html("<p class=eyebrow>Orvane time report</p>\n<h1>").text(heading.title).html("</h1>\n");
    if (!heading.subtitle.empty()) page.html("<p class=subtitle>").text(heading.subtitle).html("</p>\n");
    if (!heading.facts.empty()) {
        page.html("<dl class=facts>\n");
        for (const auto& [name, figure] : heading.facts)
            page.html("<div><dt>").text(name).html("</dt><dd>").text(figure).html("</dd></div>\n");
        page.html("</dl>\n");
    }
    page.html("</header>\n<main>\n").html(sections.content()).html("</main>\n<footer><p>").text(footer);
    page.html("</p></footer>\n<script>").html(script).html("</script>\n</body>\n</html>\n");
    return page.content();
}

}  // namespace orvane::host
