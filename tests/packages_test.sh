#!/bin/sh
# SPDX-License-Identifier: MIT
# The packages of build-package/ in a fresh Debian: shows what each brings with it, installs all,
# lets a newcomer's first lines run, purges them, and looks for what they left behind.
# The bare Debian and what was downloaded for it are kept in build-root/.
set -eu
. "$(dirname -- "$0")/../scripts/setup.sh"

need_packages mmdebstrap dpkg-dev
packages=$root/build-package cache=$root/build-root fresh=$root/build-root/fresh
ours=$(cd "$packages" && ls ./*.deb | sed 's,^\./\([^_]*\)_.*,\1,')
helpers="gcc g++ libc6-dev cmake ninja-build pkgconf gstreamer1.0-tools gstreamer1.0-plugins-base"

fail() {
    echo "packages_test: $*" >&2
    exit 1
}

inside() {
    as_root chroot "$fresh" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/tmp/home LC_ALL=C \
        DEBIAN_FRONTEND=noninteractive http_proxy="${http_proxy-}" "$@"
}

install_inside() {
    # shellcheck disable=SC2086 # lists of names
    quietly inside apt-get install -y --no-install-recommends $*
}

# Names of all packages that would be installed with those that are named.
brought_by() {
    inside apt-get install -s --no-install-recommends "$@" | sed -n 's/^Inst \([^ ]*\).*/\1/p'
}

# Their sizes, added up, in KB.
size_of() {
    [ $# = 0 ] || inside apt-cache show --no-all-versions "$@" |
        awk '$1 == "Installed-Size:" { sum += $2 } END { printf "%d", sum }'
}

list_files() {
    as_root find "$fresh" -path "$fresh/tmp" -prune -o -path "$fresh/proc" -prune -o -print |
        sed "s,^$fresh,," | LC_ALL=C sort >"$cache/$1"
}

mkdir -p "$cache/archives"
[ -s "$cache/bare.tar" ] || quietly as_root mmdebstrap --variant=minbase bookworm "$cache/bare.tar"
as_root rm -rf "$fresh"
mkdir "$fresh"
as_root tar -C "$fresh" -xf "$cache/bare.tar"
as_root cp /etc/resolv.conf "$fresh/etc/"
as_root mkdir -p "$fresh/packages" "$fresh/tmp/home"
for package in $ours; do
    as_root cp "$packages/${package}"_*.deb "$fresh/packages/"
done
(cd "$fresh" && dpkg-scanpackages packages 2>/dev/null) | as_root tee "$fresh/packages/Packages" >/dev/null
echo 'deb [trusted=yes] file:/ packages/' |
    as_root tee "$fresh/etc/apt/sources.list.d/packages.list" >/dev/null
find "$cache/archives" -name '*.deb' -exec cp -t "$fresh/var/cache/apt/archives" {} +
quietly inside apt-get update

echo "package: KB by itself, other packages that come with it, their MB"
for package in $ours; do
    others=$(brought_by "$package" | grep -vFx "$ours" || true)
    # shellcheck disable=SC2086 # lists of names
    echo "$package: $(size_of "$package"), $(echo $others | wc -w), $((($(size_of $others) + 500) / 1000))"
done

# shellcheck disable=SC2046,SC2086 # lists of names
install_inside $helpers $(brought_by $ours | grep -vFx "$ours")
cp -n "$fresh"/var/cache/apt/archives/*.deb "$cache/archives/"
list_files before
# shellcheck disable=SC2086 # a list of names
install_inside $ours
as_root cp "$root/tests/packages_first_lines.sh" "$fresh/tmp/"
inside sh -eu /tmp/packages_first_lines.sh
# shellcheck disable=SC2086 # a list of names
quietly inside apt-get purge -y $ours
list_files after
diff "$cache/before" "$cache/after" || fail "purged packages leave traces (>) or take others' files (<)"
as_root rm -rf "$fresh"
