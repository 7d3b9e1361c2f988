// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/report/report_page.h"

namespace tristop {
namespace {

constexpr const char *kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Tristop: how a merge came about</title>
<style>
body { margin: 2em; background: #222; color: #ddd; font: 15px/1.4 sans-serif; }
pre { overflow: auto; }
figure { display: inline-block; margin: 0 1em 1em 0; vertical-align: top; max-width: 46%; }
figure.comparison { max-width: 100%; }
figure.comparison img + img { display: none; }
img { max-width: 100%; }
button { margin-right: .5em; }
button.shown { font-weight: bold; }
</style>
</head>
<body>
<h1>How a merge came about</h1>
)";

// The pictures of a comparison are shown one at a time: by a button each, or alternating.
constexpr const char *kTail = R"(<script>
for (const figure of document.querySelectorAll('figure.comparison')) {
  const pictures = [...figure.querySelectorAll('img')];
  const buttons = pictures.map(picture => {
    const button = document.createElement('button');
    button.textContent = picture.alt;
    button.onclick = () => { stop(); show(picture); };
    figure.lastElementChild.append(button);
    return button;
  });
  const reference = pictures.find(picture => picture.src.endsWith('reference.png'));
  let shown = pictures[0], other = pictures[pictures.length - 1], timer = null;
  const show = picture => {
    pictures.forEach((each, i) => {
      each.style.display = each === picture ? 'inline' : 'none';
      buttons[i].className = each === picture ? 'shown' : '';
    });
    if (picture !== reference) other = picture;
    shown = picture;
  };
  const stop = () => { clearInterval(timer); timer = null; };
  const flicker = document.createElement('button');
  flicker.textContent = 'flicker with the reference';
  flicker.onclick = () => {
    if (timer) return stop();
    timer = setInterval(() => show(shown === reference ? other : reference), 500);
  };
  figure.lastElementChild.append(flicker);
  show(pictures[0]);
}
</script>
</body>
</html>
)";

std::string escaped(const std::string &text) {
    std::string safe;
    for (const char c : text)
        switch (c) {
        case '&':
            safe += "&amp;";
            break;
        case '<':
            safe += "&lt;";
            break;
        case '>':
            safe += "&gt;";
            break;
        case '"':
            safe += "&quot;";
            break;
        default:
            safe += c;
        }
    return safe;
}

std::string image(const ReportPicture &picture) {
    return "<img src=\"" + picture.name + ".png\" alt=\"" + escaped(picture.caption) + "\">";
}

} // namespace

std::string reportAsPage(const std::string &text, const std::vector<ReportSection> &sections) {
    std::string page = kHead + ("<pre>\n" + escaped(text) + "</pre>\n");
    for (const ReportSection &section : sections) {
        page += "<h2>" + escaped(section.title) + "</h2>\n<p>" + escaped(section.text) + "</p>\n";
        if (section.comparison) {
            page += "<figure class=\"comparison\">\n";
            for (const ReportPicture &picture : section.pictures)
                page += image(picture) + '\n';
            page += "<figcaption></figcaption>\n</figure>\n";
            continue;
        }
        for (const ReportPicture &picture : section.pictures)
            page += "<figure>" + image(picture) + "<figcaption>" + escaped(picture.caption) +
                    "</figcaption></figure>\n";
    }
    return page + kTail;
}

} // namespace tristop
