#!/bin/sh
# Renders the PNGs of assets/icons from their SVG sources (needs rsvg-convert,
# package librsvg2-bin).
set -eu
cd "$(dirname "$0")/../assets/icons"
cp src/cadrelle.svg cadrelle.svg
for s in 16 24 32 48 64 128 256; do
    rsvg-convert -w "$s" -h "$s" src/cadrelle.svg -o "cadrelle-$s.png"
done
for svg in src/tool-*.svg; do
    name=$(basename "$svg" .svg)
    for s in 24 48; do
        rsvg-convert -w "$s" -h "$s" "$svg" -o "$name-$s.png"
    done
done
