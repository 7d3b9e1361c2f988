#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Renders the sample bracket again and makes the pictures of docs/ from it. Needs ImageMagick's montage.
#   tools/make_samples.sh BUILD_FOLDER
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1
command -v montage >/dev/null || {
  echo "The contact sheet is made with ImageMagick: apt-get install imagemagick" >&2
  exit 1
}

"$build/tools/tristop-scene" samples
bracket=(samples/dark.jpg samples/middle.jpg samples/bright.jpg)
"$build/cli/tristop-cli" "${bracket[@]}" --output docs/sample-merged.jpg
montage -label '%f' "${bracket[@]}" docs/sample-merged.jpg -tile 2x2 -geometry 800x+6+6 -quality 88 \
  docs/contact-sheet.jpg
