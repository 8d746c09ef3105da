#!/usr/bin/env bash
# Regenerates the pictures of the documentation from the sample mesh that ./unwrap uses:
#
#   tools/make_pictures.sh [PROGRAM [FOLDER]]        (build/release/bin/tessora, docs/images)
#
# seams.png   the perspective panel: the mesh with the plug-in's seam overlay
# atlas.png   the layout of its charts in the texture
# window.png  the desktop window showing both; made only if Xvfb is installed and the program was
#             built with the window
set -euo pipefail
root=$(cd "$(dirname "$(readlink -f "$0")")/.." && pwd)
program=$(readlink -f "${1:-$root/build/release/bin/tessora}")
folder=${2:-$root/docs/images}
sample=/usr/share/glmark2/models/bunny.obj
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Reduces the picture to a palette: a few colours suffice, and the repository stays small.
publish() { # FILE WIDTH COLOURS
    if command -v convert >/dev/null; then
        convert "$work/$1" -strip -resize "$2" -colors "$3" "PNG8:$folder/$1"
    else
        mv "$work/$1" "$folder/$1"
    fi
}

mkdir -p "$folder"
export TESSORA_PREFERENCES=$work/preferences.mel
"$program" unwrap "$sample" -o "$work/bunny.obj" --high_quality --quiet \
    --view "$work/seams.png" --view_panel persp --view_width 640 --layout "$work/atlas.png"
mv "$work/seams.png" "$folder/seams.png" # kept in full colour: a palette would band its shading
publish atlas.png 480 64

if command -v Xvfb >/dev/null; then
    "$root/tools/with_screen.sh" "$program" view "$sample" --size 1280x800 \
        --exec 'select -all; tessora -high_quality 1; select -cl;' --screenshot "$work/window.png"
    publish window.png 1280 200
fi
ls -l "$folder"
