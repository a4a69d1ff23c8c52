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


def make_package(folder, name, file, code, *flags, architecture=ARCHITECTURE):
    """A package NAME_1.0_ARCHITECTURE.deb with one binary."""
    tree = folder / name
    (tree / "DEBIAN").mkdir(parents=True)
    (tree / "DEBIAN/control").write_text(
        f"Package: {name}\nVersion: 1.0\nArchitecture: {architecture}\nMaintainer: T <t@example.com>\nDescription: t\n")
    (tree / "usr/lib").mkdir(parents=True)
    subprocess.run([CXX, "-x", "c++", "-", "-x", "none", "-o", str(tree / "usr/lib" / file), *flags], input=code, text=True, check=True)
    subprocess.run(["dpkg-deb", "--root-owner-group", "--build", str(tree), str(folder / f"{name}_1.0_{architecture}.deb")],
                   check=True, stdout=subprocess.DEVNULL)


def make_root(folder, architecture):
    """A root as scripts/sysroot-arm64 makes it: a library of one package and two of headers."""
    triplet = subprocess.run(["dpkg-architecture", f"-a{architecture}", "-qDEB_HOST_MULTIARCH"],
                             check=True, capture_output=True, text=True).stdout.strip()
    root = folder / "root"
    library = root / "usr/lib" / triplet / "libmade.so.1"
    library.parent.mkdir(parents=True)
    subprocess.run([CXX, "-x", "c++", "-", "-o", str(library), "-shared", "-fPIC", "-nostdlib", "-Wl,-soname,libmade.so.1"],
                   input="int made() { return 1; }", text=True, check=True)
    (root / "dpkg/info").mkdir(parents=True)
    (root / "dpkg/updates").mkdir()
    (root / "dpkg/arch").write_text(f"{ARCHITECTURE}\n{architecture}\n")
    (root / "dpkg/info/format").write_text("1\n")
    for package, machine, licence, suffix, files in [("libmade1", architecture, "Zlib", f":{architecture}", [library]),
                                                     ("libcli11-dev", "all", "BSD-3-clause", "", []),
                                                     ("nlohmann-json3-dev", "all", "Expat", "", [])]:
        with (root / "dpkg/status").open("a") as status:
            status.write(f"Package: {package}\nStatus: install ok installed\nVersion: 7.0-1\nArchitecture: {machine}\n"
                         f"{'Multi-Arch: same' if suffix else 'Multi-Arch: foreign'}\n"
                         "Maintainer: T <t@example.com>\nDescription: t\n\n")
        (root / f"dpkg/info/{package}{suffix}.list").write_text("".join(f"{file}\n" for file in files))
        (root / "usr/share/doc" / package).mkdir(parents=True)
        (root / "usr/share/doc" / package / "copyright").write_text(f"Format: x\n\nFiles: *\nLicense: {licence}\n")
    return root, library


def check_root():
    """With --root all comes from there, for packages of another machine, and nothing from this one."""
    other = "arm64" if ARCHITECTURE != "arm64" else "amd64"
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        root, library = make_root(folder, other)
        make_package(folder, "stanag-overlay", "libours.so", "int made(); int ours() { return made(); }",
                     "-shared", "-fPIC", "-nostdlib", str(library), architecture=other)
        deb = str(folder / f"stanag-overlay_1.0_{other}.deb")
        document = json.loads(subprocess.run([str(SOURCE / "scripts/sbom"), "--root", str(root), deb],
                                             check=True, capture_output=True, text=True).stdout)
        without = subprocess.run([str(SOURCE / "scripts/sbom"), deb], capture_output=True, text=True)
    assert without.returncode == 1
    assert without.stderr == f"sbom: libmade.so.1: no such library for {other}; install what the packages depend on\n"
    check_spdx(document)
    assert document["name"] == f"stanag-overlay-1.0-{other}"
    listed = {(package["name"], package["versionInfo"], package["licenseDeclared"],
               package["externalRefs"][0]["referenceLocator"]) for package in document["packages"]}
    assert listed == {
        ("stanag-overlay", "1.0", "Apache-2.0", f"pkg:deb/stanag-overlay@1.0?arch={other}"),
        ("libmade1", "7.0-1", "Zlib", f"pkg:deb/debian/libmade1@7.0-1?arch={other}&distro=debian-12"),
        ("libcli11-dev", "7.0-1", "BSD-3-Clause", "pkg:deb/debian/libcli11-dev@7.0-1?arch=all&distro=debian-12"),
        ("nlohmann-json3-dev", "7.0-1", "MIT", "pkg:deb/debian/nlohmann-json3-dev@7.0-1?arch=all&distro=debian-12")}, listed


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
check_root()
