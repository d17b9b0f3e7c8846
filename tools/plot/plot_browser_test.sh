#!/bin/sh
# The report in a real browser: a headless Chromium loads the page of the
# sample log and must report no console message (the page logs nothing,
# so any message is an error), and the page's own check must count four
# drawn charts. Without a browser the test is skipped (exit 77).
#
#   plot_browser_test.sh ZELNAV LOG SCRATCH_DIR
set -u
zelnav=$1 log=$2 dir=$3
browser=$(command -v chromium || command -v chromium-browser || command -v google-chrome)
if [ -z "$browser" ]; then
    echo "no chromium on this machine: skipped"
    exit 77
fi
mkdir -p "$dir"
page=$dir/report.html
"$zelnav" plot "$log" -o "$page" --ref 4627852.3986,119640.3423,4372994.4588 || exit 1

timeout 120 "$browser" --headless --disable-gpu --no-sandbox --user-data-dir="$dir/profile" \
    --enable-logging=stderr --v=0 --dump-dom "file://$page" >"$dir/dom.html" 2>"$dir/browser.log"
status=$?
fail=0
if [ $status -ne 0 ]; then
    echo "the browser ended with status $status"; fail=1
fi
if grep -n 'CONSOLE' "$dir/browser.log"; then
    echo "the page wrote to the console"; fail=1
fi
for id in plot-scatter plot-enu plot-sats plot-sky; do
    grep -q "<figure id=\"$id\">" "$dir/dom.html" || { echo "no $id in the page"; fail=1; }
done
grep -q '>Predicted sky, ' "$dir/dom.html" || { echo "the sky plot is missing"; fail=1; }
if ! grep -q 'data-plots="4"' "$dir/dom.html"; then
    echo "the browser did not draw four charts: $(grep -o 'data-plots="[0-9]*"' "$dir/dom.html")"
    fail=1
fi
[ $fail -eq 0 ] && echo "report loads in $browser: four charts drawn, no console message"
exit $fail
