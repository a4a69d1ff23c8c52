// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Each address is one short function: ask preview, store or check, and write what they say as JSON.
#include "editor/editor_api.h"

#include "check/config_check.h"
#include "check/config_text.h"
#include "editor/page_files.h"
#include "editor/picture_message.h"
#include "telemetry/derived_keys.h"
#include "telemetry/json_line.h"

#include <set>
#include <string>
#include <utility>

namespace editor {
namespace {

Response jsonResponse(SwJsonValue const& value, int status = 200)
{
    std::string body;
    telemetry::appendJson(body, value);
    body += '\n';
    return contentResponse(status, "application/json", std::move(body));
}

SwJsonArray textValues(std::vector<std::string> const& texts)
{
    SwJsonArray values;
    values.reserve(texts.size());
    for (std::string const& text : texts) {
        values.append(text);
    }
    return values;
}

int statusOf(StoreFailure::Kind kind)
{
    constexpr int kConflictWithState = 409;
    constexpr int kFull = 507;
    constexpr int kOther = 500;
    return kind == StoreFailure::Kind::Blocked ? kConflictWithState : kind == StoreFailure::Kind::Full ? kFull : kOther;
}

void append(check::Findings& findings, check::Findings const& more)
{
    findings.insert(findings.end(), more.begin(), more.end());
}

SwJsonArray findingValues(check::Findings const& findings)
{
    SwJsonArray values;
    for (check::Finding const& finding : findings) {
        values.append(SwJsonObject{{"place", finding.place}, {"text", finding.text}});
    }
    return values;
}

Response conflict(StoredText const& stored)
{
    std::string const what = stored.etag.empty() ? "the file is no longer there" : "the file was changed meanwhile";
    return jsonResponse(SwJsonObject{{"error", what}, {"text", stored.text}, {"etag", stored.etag}}, 412);
}

}  // namespace

std::vector<Route> EditorApi::routes()
{
    std::vector<Route> routes;
    for (PageFile const& file : pageFiles()) {
        std::string const path = file.name == "index.html" ? "/" : "/" + std::string(file.name);
        routes.push_back({"GET", path, [&file](SwJsonObject const&) {
                              return contentResponse(200, std::string(file.type), std::string(file.bytes));
                          }});
    }
    routes.push_back({"GET", "/api/clip", [this](SwJsonObject const&) { return clip_(); }});
    routes.push_back({"GET", "/api/schema", [this](SwJsonObject const&) { return schema_(); }});
    routes.push_back({"GET", "/api/keys", [this](SwJsonObject const&) { return keysAnswer_(); }});
    routes.push_back({"GET", "/api/config", [this](SwJsonObject const&) { return loadConfig_(); }});
    routes.push_back({"PUT", "/api/config", [this](SwJsonObject const& body) { return saveConfig_(body); }});
    routes.push_back({"POST", "/api/check", [this](SwJsonObject const& body) { return check_(body); }});
    routes.push_back({"POST", "/api/preview", [this](SwJsonObject const& body) { return show_(body); }});
    return routes;
}

Response EditorApi::clip_()
{
    std::unique_lock lock(previewMutex_);
    ClipFacts const facts = preview_->facts();
    lock.unlock();
    return jsonResponse(SwJsonObject{{"name", facts.name},
                                     {"width", facts.width},
                                     {"height", facts.height},
                                     {"seconds", facts.seconds ? SwJsonValue(*facts.seconds) : SwJsonValue()},
                                     {"frames", facts.frames ? SwJsonValue(*facts.frames) : SwJsonValue()},
                                     {"frameSeconds", facts.frameSeconds},
                                     {"config", store_->path()}});
}

EditorApi::Keys const& EditorApi::keys_()
{
    std::call_once(keysAsked_, [this] {
        std::scoped_lock const lock(previewMutex_);
        keysOfClip_ = {preview_->keys(), preview_->derivableKeys(), preview_->schema()};
    });
    return keysOfClip_;
}

Response EditorApi::schema_()
{
    return contentResponse(200, "application/json", keys_().schema);
}

Response EditorApi::keysAnswer_()
{
    Keys const& keys = keys_();
    return jsonResponse(SwJsonObject{{"keys", textValues(keys.delivered)}, {"derivable", textValues(keys.derivable)}});
}

SwJsonObject EditorApi::findings_(std::string const& text)
{
    check::ConfigText const read = check::readConfigText(text);
    check::Findings findings;
    if (!read.fault) {
        Keys const& keys = keys_();
        std::set<std::string> const delivered(keys.delivered.begin(), keys.delivered.end());
        findings = check::checkConfig(read.root, text);
        append(findings,
               check::checkKeys(read.root, keys.delivered, {keys.derivable, [&delivered](std::string const& key) {
                                                                return telemetry::missingSources(key, delivered);
                                                            }}));
    }
    return {{"error", faultValue(read.fault)}, {"findings", findingValues(findings)}};
}

Response EditorApi::check_(SwJsonObject const& body)
{
    return jsonResponse(findings_(textMember(body, "text")));
}

Response EditorApi::loadConfig_()
{
    try {
        StoredText const stored = store_->load();
        SwJsonObject answer = findings_(stored.text);
        answer.insertOrAssign("path", store_->path());
        answer.insertOrAssign("text", stored.text);
        answer.insertOrAssign("etag", stored.etag);
        return jsonResponse(std::move(answer));
    } catch (StoreFailure const& failure) {
        throw RequestFailure(statusOf(failure.kind), failure.what());
    }
}

Response EditorApi::saveConfig_(SwJsonObject const& body)
{
    std::string const& text = textMember(body, "text");
    std::string const& etag = textMember(body, "etag");
    if (check::ConfigText const read = check::readConfigText(text); read.fault) {
        throw RequestFailure(422, check::lineOf(*read.fault));
    }
    try {
        std::optional<StoredText> const other = store_->save(text, etag);
        return other ? conflict(*other) : jsonResponse(SwJsonObject{{"etag", etagOf(text)}});
    } catch (StoreFailure const& failure) {
        throw RequestFailure(statusOf(failure.kind), failure.what());
    }
}

Response EditorApi::show_(SwJsonObject const& body)
{
    PreviewQuestion const question = readPreviewQuestion(body);
    std::unique_lock lock(previewMutex_);
    try {
        Shown const shown = preview_->show(question.text, question.place, question.hidden);
        lock.unlock();
        return contentResponse(200, "application/octet-stream", previewMessage(shown));
    } catch (std::runtime_error const& failure) {
        throw RequestFailure(422, failure.what());
    }
}

}  // namespace editor
