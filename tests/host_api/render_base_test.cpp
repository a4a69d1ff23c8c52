// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The view of a frame's inputs by producer.
#include "RenderBase.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

}  // namespace

TEST(ProducerView, IsMadeOncePerContextAndServedFromTheCache)
{
    RenderContext context;
    context.inputsByType["t"].inputs = {{"a", "", 0, false}};
    ProducerView const& first = RenderBase::producerTypeView(context, "t");
    context.inputsByType.clear();
    EXPECT_EQ(&RenderBase::producerTypeView(context, "t"), &first);
    EXPECT_EQ(first.producers, Names{"a"});
}

TEST(ProducerView, NamesOrderAndRecords)
{
    RenderContext context;
    ProducerRecord byKey;
    byKey.payloadKey = "m";
    byKey.sourceId = 7;
    ProducerRecord byName;
    byName.payloadKey = "x";
    byName.producerName = "c";
    byName.topic = "/telemetry";
    ProducerRecord const nameless;
    ProducerRecord again = byName;
    again.topic = "/other";
    context.declaredProducers["t"] = {byKey, nameless, byName, again};
    context.inputsByType["t"].inputs = {{"z", "", 0, false}, {"k1", "c", 0, false}, {"", "", 0, false},
                                        {"a", "", 0, false}, {"k2", "c", 3, true},  {"B", "", 0, false},
                                        {"z", "", 5, false}};
    ProducerView const& view = RenderBase::producerTypeView(context, "t");
    auto const& inputs = context.inputsByType["t"].inputs;
    using Inputs = std::vector<RenderInput const*>;
    EXPECT_EQ(view.producers, (Names{"m", "c", "B", "a", "z"}));
    EXPECT_EQ(view.inputsByProducer.at("c"), (Inputs{&inputs[1], &inputs[4]}));
    EXPECT_EQ(view.inputsByProducer.at("z"), (Inputs{&inputs[0], &inputs[6]}));
    EXPECT_EQ(view.inputsByProducer.count("m"), 0U);
    EXPECT_EQ(view.declared.size(), 2U);
    EXPECT_EQ(view.declared.at("m").sourceId, 7U);
    EXPECT_EQ(view.declared.at("c").topic, "/telemetry");
}

TEST(ProducerView, UnknownTypeGivesAnEmptyView)
{
    RenderContext const context;
    ProducerView const& view = RenderBase::producerTypeView(context, "t");
    EXPECT_TRUE(view.producers.empty() && view.inputsByProducer.empty() && view.declared.empty());
    EXPECT_EQ(context.producerViews.count("t"), 1U);
}
