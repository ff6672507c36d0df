// ResultsExporterOptions_test.cpp: settings of the export.
#include "analysis/ResultsExporterOptions.h"

#include <gtest/gtest.h>

#include <string>

using Velcor::Tavell::ResultsExporterOptions;

TEST(ResultsExporterOptions, new_options_have_format_0_empty_labels_no_units_and_17_digits)
{
    ResultsExporterOptions options;
    EXPECT_EQ(options.GetFormat(), 0);
    EXPECT_STREQ(options.GetNodeLabel(), "");
    EXPECT_STREQ(options.GetElementLabel(), "");
    EXPECT_EQ(options.GetPrecision(), 17);
    for (int key = 0; key <= 8; ++key) {
        EXPECT_STREQ(options.GetResultLabel(key), "");
        double scale = -7.0;
        double offset = -8.0;
        options.GetL10n(key, scale, offset);
        EXPECT_EQ(scale, -7.0);
        EXPECT_EQ(offset, -8.0);
    }
}

TEST(ResultsExporterOptions, format_and_precision_are_kept_as_they_are)
{
    ResultsExporterOptions options;
    options.SetFormat(-3);
    options.SetPrecision(-1);
    EXPECT_EQ(options.GetFormat(), -3);
    EXPECT_EQ(options.GetPrecision(), -1);
}

TEST(ResultsExporterOptions, labels_are_copied_and_null_empties_them)
{
    ResultsExporterOptions options;
    std::string label = "Node, \"id\"";
    options.SetNodeLabel(label.c_str());
    options.SetElementLabel("Element");
    label = "changed";
    EXPECT_STREQ(options.GetNodeLabel(), "Node, \"id\"");
    EXPECT_STREQ(options.GetElementLabel(), "Element");
    options.SetNodeLabel(nullptr);
    EXPECT_STREQ(options.GetNodeLabel(), "");
    options.SetElementLabel(nullptr);
    EXPECT_STREQ(options.GetElementLabel(), "");
}

TEST(ResultsExporterOptions, a_label_can_be_set_to_itself)
{
    ResultsExporterOptions options;
    const std::string label(100, 'x');
    options.SetNodeLabel(label.c_str());
    options.SetNodeLabel(options.GetNodeLabel());
    EXPECT_EQ(options.GetNodeLabel(), label);
    options.SetResultLabel(3, label.c_str());
    options.SetResultLabel(3, options.GetResultLabel(3));
    EXPECT_EQ(options.GetResultLabel(3), label);
}

TEST(ResultsExporterOptions, result_labels_are_inserted_replaced_and_emptied_by_key)
{
    ResultsExporterOptions options;
    options.SetResultLabel(7, "Pressure");
    options.SetResultLabel(-5, "any key");
    EXPECT_STREQ(options.GetResultLabel(7), "Pressure");
    EXPECT_STREQ(options.GetResultLabel(-5), "any key");
    EXPECT_STREQ(options.GetResultLabel(6), "");
    options.SetResultLabel(7, "p");
    EXPECT_STREQ(options.GetResultLabel(7), "p");
    options.SetResultLabel(7, nullptr);
    EXPECT_STREQ(options.GetResultLabel(7), "");
}

TEST(ResultsExporterOptions, display_units_are_inserted_and_replaced_by_key)
{
    ResultsExporterOptions options;
    options.SetL10n(7, 0.001, 0.0);
    options.SetL10n(6, 1.0, -273.15);
    double scale = 0.0;
    double offset = 0.0;
    options.GetL10n(7, scale, offset);
    EXPECT_EQ(scale, 0.001);
    EXPECT_EQ(offset, 0.0);
    options.GetL10n(6, scale, offset);
    EXPECT_EQ(scale, 1.0);
    EXPECT_EQ(offset, -273.15);
    options.SetL10n(6, 1.8, -459.67);
    options.GetL10n(6, scale, offset);
    EXPECT_EQ(scale, 1.8);
    EXPECT_EQ(offset, -459.67);
}
