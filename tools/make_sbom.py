#!/usr/bin/env python3
"""Writes the software bill of materials of a build, as SPDX 2.3 JSON.

    tools/make_sbom.py BUILD [FILE]      FILE is BUILD/tessora.spdx.json unless given

Lists the Debian packages whose headers were compiled in (from ninja's record of what every object
included), those whose libraries the binaries are linked with, and their licences as the packages declare
them. Tests and benchmarks do not count. Everything comes from the build itself: nothing is listed by hand."""

import hashlib
import json
import pathlib
import re
import subprocess
import sys

# The Python package is a package of its own.
NOT_PRODUCT = ("tests/", "python/", "bench/", "fuzz/", "gtest", "googletest/")
BINARIES = ("tessora", "tessora_import", "tessora.so", "libtessora_host.so", "libtessora_d3dx9.so",
            "libtessora_atlas.so.1")
# Headers of the C and C++ libraries themselves: part of every program of the system.
TOOLCHAIN = re.compile(r"^(libc6|libstdc\+\+|libgcc|linux-libc|gcc|g\+\+|libgomp|libcrypt)")


def run(*command, cwd=None):
    return subprocess.run([str(word) for word in command], cwd=cwd, check=True, capture_output=True,
                          text=True).stdout


def included_headers(build):
    """System headers that the objects of the product included."""
    headers, counts = set(), False
    for line in run("ninja", "-t", "deps", cwd=build).splitlines():
        if line and not line.startswith(" "):
            counts = not line.startswith(NOT_PRODUCT)
        elif counts and line.strip().startswith("/usr/"):
            headers.add(line.strip())
    return headers


def linked_libraries(build):
    """Paths of the system libraries that the binaries name as needed."""
    needed = set()
    for name in BINARIES:
        file = build / "bin" / name
        if file.exists():
            needed |= set(re.findall(r"NEEDED.*\[(.+)\]", run("readelf", "-d", file)))
    found = {}
    for line in run("/sbin/ldconfig", "-p").splitlines():
        words = re.match(r"\s+(\S+) \(.*x86-64.*\) => (\S+)|\s+(\S+) \(libc6.*\) => (\S+)", line)
        if words:
            found.setdefault(words[1] or words[3], words[2] or words[4])
    return {found[name] for name in needed if name in found}


def query_owners(spellings):
    """Maps those files that a Debian package installed to its name."""
    done = subprocess.run(["dpkg-query", "-S", *spellings], capture_output=True, text=True)
    rows = (line.rpartition(": ") for line in done.stdout.splitlines())
    return {path: names.split(",")[0].split(":")[0] for names, _, path in rows}


def owners(paths):
    """Debian packages that installed these files, under whichever of its names dpkg knows a file."""
    spellings = {path: (path, str(pathlib.Path(path).resolve()), "/usr" + path, path.removeprefix("/usr"))
                 for path in paths}
    known = query_owners(sorted({name for names in spellings.values() for name in names}))
    packages = set()
    for path, names in spellings.items():
        name = next((name for name in names if name in known), None)
        if name is None:
            sys.exit(f"make_sbom: no package installed {path}")
        packages.add(known[name])
    return packages


def licences(package):
    """The licences that a package's copyright file declares for its files, in order."""
    file = pathlib.Path("/usr/share/doc", package, "copyright")
    text = file.read_text(errors="replace") if file.exists() else ""
    if "Format:" not in text.split("\n\n")[0]:
        return []
    found = []
    for stanza in text.split("\n\n"):
        files = re.search(r"^Files:\s*(.*(?:\n .*)*)", stanza, re.M)
        licence = re.search(r"^License:\s*(.+)$", stanza, re.M)
        if files and licence and not files[1].lstrip().startswith("debian/"):
            found.append(licence[1].strip())
    return list(dict.fromkeys(found))


def entry(package, usage):
    version, source, page = run("dpkg-query", "-W", "-f",
                                "${Version}\t${source:Package} ${source:Version}\t${Homepage}", package).split("\t")
    declared = licences(package)
    return {
        "SPDXID": "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", package),
        "name": package,
        "versionInfo": version,
        "supplier": "Organization: Debian",
        "downloadLocation": "NOASSERTION",
        "homepage": page or "NOASSERTION",
        "sourceInfo": "built from the Debian source package " + source,
        "filesAnalyzed": False,
        "licenseConcluded": "NOASSERTION",
        "licenseDeclared": "NOASSERTION",
        "licenseComments": "; ".join(declared) or f"see /usr/share/doc/{package}/copyright",
        "copyrightText": "NOASSERTION",
        "comment": " and ".join(sorted(usage)),
        "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                          "referenceLocator": f"pkg:deb/debian/{package}@{version}"}],
    }


def product(build):
    cache = (build / "CMakeCache.txt").read_text()
    version = re.search(r"^CMAKE_PROJECT_VERSION:\w+=(.+)$", cache, re.M)[1]
    return {"SPDXID": "SPDXRef-tessora", "name": "tessora", "versionInfo": version,
            "supplier": "Organization: Brightfold Labs", "downloadLocation": "NOASSERTION",
            "filesAnalyzed": False, "licenseConcluded": "Apache-2.0", "licenseDeclared": "Apache-2.0",
            "copyrightText": "2026 Brightfold Labs"}


def bill(build):
    usage = {}
    for package in owners(included_headers(build)):
        if not TOOLCHAIN.match(package):
            usage.setdefault(package, set()).add("headers compiled in")
    for package in owners(linked_libraries(build)):
        usage.setdefault(package, set()).add("linked dynamically")
    packages = [entry(package, how) for package, how in sorted(usage.items())]
    content = json.dumps(packages, sort_keys=True).encode()
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": "tessora",
        # The same build gives the same document.
        "documentNamespace": "https://spdx.org/spdxdocs/tessora-" + hashlib.sha256(content).hexdigest(),
        "creationInfo": {"created": "1970-01-01T00:00:00Z", "creators": ["Tool: make_sbom.py"]},
        "packages": [product(build)] + packages,
        "relationships": [{"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES",
                           "relatedSpdxElement": "SPDXRef-tessora"}]
                         + [{"spdxElementId": "SPDXRef-tessora", "relationshipType": "DEPENDS_ON",
                             "relatedSpdxElement": package["SPDXID"]} for package in packages],
    }


def main():
    if len(sys.argv) < 2 or sys.argv[1] in ("-h", "--help"):
        print(__doc__)
        return 0 if len(sys.argv) > 1 else 2
    build = pathlib.Path(sys.argv[1])
    file = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else build / "tessora.spdx.json"
    file.write_text(json.dumps(bill(build), indent=1) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
