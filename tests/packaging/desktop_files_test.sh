#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# desktop_files_test.sh PACKAGING: what the desktop reads is valid, and the manual page has no faults.
set -euo pipefail
cd "$1"
desktop-file-validate org.tristop.Tristop.desktop
appstreamcli validate --no-net --explain org.tristop.Tristop.metainfo.xml
faults=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z tristop.1 2>&1 >/dev/null)
[ -z "$faults" ] || {
  echo "$faults"
  exit 1
}
