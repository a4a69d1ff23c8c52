#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
"""The bill of materials of two small packages, made of programs of this machine: what it lists and how, and that it is SPDX 2.3.

    sbom_test.py SOURCE_DIR CXX
"""

import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

SOURCE, CXX = Path(sys.argv[1]), sys.argv[2]
ARCHITECTURE = subprocess.run(["dpkg", "--print-architecture"], check=True, capture_output=True, text=True).stdout.strip()


def installed_version(package):
    return subprocess.run(["dpkg-query", "--show", "--showformat=${Version}", package],
                          check=True, capture_output=True, text=True).stdout


def make_package(folder, name, file, code, *flags):
    """A package NAME_1.0_ARCHITECTURE.deb with one binary."""
    tree = folder / name
    (tree / "DEBIAN").mkdir(parents=True)
    (tree / "DEBIAN/control").write_text(
        f"Package: {name}\nVersion: 1.0\nArchitecture: {ARCHITECTURE}\nMaintainer: T <t@example.com>\nDescription: t\n")
    (tree / "usr/lib").mkdir(parents=True)
    subprocess.run([CXX, "-x", "c++", "-", "-x", "none", "-o", str(tree / "usr/lib" / file), *flags], input=code, text=True, check=True)
    subprocess.run(["dpkg-deb", "--root-owner-group", "--build", str(tree), str(folder / f"{name}_1.0_{ARCHITECTURE}.deb")],
                   check=True, stdout=subprocess.DEVNULL)


def check_spdx(document):
    """What the standard asks of the members that are used here."""
    assert document["spdxVersion"] == "SPDX-2.3"
    assert document["dataLicense"] == "CC0-1.0"
    assert document["SPDXID"] == "SPDXRef-DOCUMENT"
    assert re.fullmatch(r"https://[^#]+", document["documentNamespace"])
    assert all(re.match(r"(Person|Organization|Tool): ", creator) for creator in document["creationInfo"]["creators"])
    identifiers = [package["SPDXID"] for package in document["packages"]]
    assert len(set(identifiers)) == len(identifiers)
    for package in document["packages"]:
        assert re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", package["SPDXID"])
        assert package["filesAnalyzed"] is False and package["downloadLocation"] == "NOASSERTION"
        words = package["licenseDeclared"].split()
        assert all(re.fullmatch(r"[A-Za-z0-9.-]+", word) for word in words), words
        assert all((word in ("AND", "OR")) == (index % 2 == 1) for index, word in enumerate(words)), words
        [reference] = package["externalRefs"]
        assert re.fullmatch(r"pkg:deb/(debian/)?[a-z0-9.+-]+@[A-Za-z0-9.%~-]+\?arch=[a-z0-9]+(&distro=debian-12)?",
                            reference["referenceLocator"]), reference
    for relation in document["relationships"]:
        assert relation["spdxElementId"] in [*identifiers, "SPDXRef-DOCUMENT"]
        assert relation["relatedSpdxElement"] in identifiers


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        make_package(folder, "our-library", "libours.so", "#include <openssl/sha.h>\n"
                     "unsigned char* hash(unsigned char const* p) { return SHA256(p, 1, nullptr); }",
                     "-shared", "-fPIC", "-Wl,-soname,libours.so", "-lcrypto")
        make_package(folder, "our-program", "program",
                     "unsigned char* hash(unsigned char const*); int main() { return hash(nullptr) != nullptr; }",
                     str(folder / "our-library/usr/lib/libours.so"), "-Wl,-rpath-link,/usr/lib")
        debs = sorted(str(deb) for deb in folder.glob("*.deb"))
        environment = dict(os.environ, SOURCE_DATE_EPOCH="1767225600")
        texts = [subprocess.run([str(SOURCE / "scripts/sbom"), *order], check=True, capture_output=True, text=True,
                                env=environment).stdout for order in (debs, debs[::-1])]
        assert texts[0] == texts[1], "the order of the packages matters"
    document = json.loads(texts[0])
    check_spdx(document)
    assert document["creationInfo"]["created"] == "2026-01-01T00:00:00Z"
    packages = {package["name"]: package for package in document["packages"]}
    assert {"our-library", "our-program", "libssl3", "libc6"} <= packages.keys()
    assert packages["libssl3"]["versionInfo"] == installed_version("libssl3:" + ARCHITECTURE)
    assert packages["libssl3"]["licenseDeclared"] == "Apache-2.0"
    assert len(packages["our-library"]["checksums"][0]["checksumValue"]) == 64
    relations = {(relation["spdxElementId"], relation["relationshipType"], relation["relatedSpdxElement"])
                 for relation in document["relationships"]}
    for expected in [("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Package-our-program"),
                     ("SPDXRef-DOCUMENT", "DESCRIBES", "SPDXRef-Package-our-library"),
                     ("SPDXRef-Package-our-program", "DYNAMIC_LINK", "SPDXRef-Package-our-library"),
                     ("SPDXRef-Package-our-library", "DYNAMIC_LINK", "SPDXRef-Package-libssl3")]:
        assert expected in relations, expected
    assert ("SPDXRef-Package-our-program", "DYNAMIC_LINK", "SPDXRef-Package-libssl3") not in relations
    print(len(document["packages"]), "packages")


main()
