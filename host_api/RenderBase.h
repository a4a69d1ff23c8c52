// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What render plugins share: input requirements and the view of a frame's inputs by producer.
// Header-only, so that it becomes part of every plugin.
#pragma once

#include "IRenderPlugin.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

class RenderBase : public IRenderPlugin {
public:
    /// One requirement per input type, in order, none of them required.
    std::vector<RenderInputRequirement> input_requirements() const override
    {
        std::vector<RenderInputRequirement> requirements;
        for (std::string& type : input_types()) {
            requirements.push_back({std::move(type), false});
        }
        return requirements;
    }

    /// The frame's inputs of `type` grouped by producer; made at most once per context and type, then
    /// served from the context's cache. Records and inputs without any name are left out.
    static ProducerView const& producerTypeView(RenderContext const& context, std::string const& type)
    {
        if (auto const cached = context.producerViews.find(type); cached != context.producerViews.end()) {
            return cached->second;
        }
        ProducerView view;
        std::unordered_set<std::string> known;
        addDeclared_(context, type, view, known);
        addUndeclared_(context, type, view, known);
        return context.producerViews.emplace(type, std::move(view)).first->second;
    }

private:
    template <typename Named>
    static std::string const& nameOf_(Named const& record)
    {
        return record.producerName.empty() ? record.payloadKey : record.producerName;
    }

    static void addDeclared_(RenderContext const& context, std::string const& type, ProducerView& view,
                             std::unordered_set<std::string>& known)
    {
        auto const declared = context.declaredProducers.find(type);
        if (declared == context.declaredProducers.end()) {
            return;
        }
        for (ProducerRecord const& record : declared->second) {
            std::string const& name = nameOf_(record);
            if (!name.empty() && known.insert(name).second) {
                view.producers.push_back(name);
                view.declared.emplace(name, record);
            }
        }
    }

    static void addUndeclared_(RenderContext const& context, std::string const& type, ProducerView& view,
                               std::unordered_set<std::string>& known)
    {
        auto const group = context.inputsByType.find(type);
        if (group == context.inputsByType.end()) {
            return;
        }
        auto const firstNew = static_cast<std::ptrdiff_t>(view.producers.size());
        for (RenderInput const& input : group->second.inputs) {
            std::string const& name = nameOf_(input);
            if (name.empty()) {
                continue;
            }
            view.inputsByProducer[name].push_back(&input);
            if (known.insert(name).second) {
                view.producers.push_back(name);
            }
        }
        std::sort(view.producers.begin() + firstNew, view.producers.end());
    }
};
