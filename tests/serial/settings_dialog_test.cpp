#include "platform/windows/control_messages.h"
#include "serial/ComDevice.h"
#include "serial/SettingsDialog.h"
#include "tests/support/environment.h"
#include "tests/support/pty.h"
#include "tests/support/scripted_presenter.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using support::control;
using tarnel::ControlView;
using tarnel::DialogView;

/// What the person reads in a list.
std::string chosen(const DialogView& dialog, UINT id) {
    const ControlView& list = control(dialog, id);
    return list.selection < 0 ? "" : list.items[static_cast<std::size_t>(list.selection)];
}

std::string chosen(const DialogView& dialog) {
    std::string texts;
    for (const UINT id : {544U, 545U, 546U, 547U, 548U}) {
        texts += chosen(dialog, id) + ';';
    }
    return texts;
}

std::string checks(const DialogView& dialog) {
    std::string states;
    for (const UINT id : {549U, 550U, 551U, 557U}) {
        states += control(dialog, id).check ? 'X' : ' ';
    }
    return states;
}

void choose(const DialogView& dialog, UINT id, const std::string& text) {
    const ControlView& list = control(dialog, id);
    const auto found = std::find(list.items.begin(), list.items.end(), text);
    ASSERT_NE(found, list.items.end()) << text;
    tarnel::user_chooses(list.window, static_cast<int>(found - list.items.begin()));
}

void click(const DialogView& dialog, UINT id) {
    tarnel::user_clicks(control(dialog, id).window);
}

void change_everything(const DialogView& dialog) {
    choose(dialog, 544, "COM10:");
    choose(dialog, 545, "19.2k");
    choose(dialog, 546, "8");
    choose(dialog, 547, "Space");
    choose(dialog, 548, "1.5");
    for (const UINT id : {549U, 551U, 557U}) {
        click(dialog, id);
    }
}

class SettingsDialog : public testing::Test {
  protected:
    SettingsDialog() { environment_.speak("en"); }

    INT_PTR run() {
        return CComSettingDlg(configuration, 0, CComSettingDlg::usual_template, nullptr).DoModal();
    }

    /// All that the dialog edits, and the flags that it does not.
    std::string state() const {
        return configuration.GetInfoString().GetString() + std::string(" ") +
               std::to_string(configuration.m_byFlags) + " " +
               std::to_string(configuration.m_bConnectOnLoad);
    }

    support::ScriptedPresenter screen;
    CComDeviceConfiguration configuration;

    support::Environment environment_;
};

TEST_F(SettingsDialog, ShowsAConfigurationAndStoresWhatIsChosen) {
    configuration.m_byFlags = 0xF0; // bits that belong to others
    const std::string fresh = state();
    screen.next_dialog([](const DialogView& dialog) {
        EXPECT_EQ(dialog.caption, "Serial Port Configuration");
        EXPECT_EQ(chosen(dialog), "COM1:;9600;7;Even;1;");
        EXPECT_EQ(checks(dialog), "    ");
        EXPECT_EQ(control(dialog, 544).items.size(), 10);
        EXPECT_EQ(control(dialog, 545).items.size(), 18);
        EXPECT_EQ(dialog.focus, control(dialog, 544).window);
        tarnel::user_presses(dialog.window, VK_RETURN);
    });
    EXPECT_EQ(run(), IDOK);
    EXPECT_EQ(state(), fresh);

    screen.next_dialog(change_everything, [](const DialogView& dialog) {
        EXPECT_EQ(checks(dialog), "X XX");
        click(dialog, IDOK);
    });
    EXPECT_EQ(run(), IDOK);
    EXPECT_EQ(state(), "COM10: 19200,8,4,1 ( XX) 245 1");
}

TEST_F(SettingsDialog, CancelChangesNothing) {
    const std::string before = state();
    const support::ScriptedPresenter::Step leave[] = {
        [](const DialogView& dialog) { click(dialog, IDCANCEL); },
        [](const DialogView& dialog) { tarnel::user_presses(dialog.window, VK_ESCAPE); },
        [](const DialogView& dialog) { tarnel::user_closes(dialog.window); }};
    for (const auto& way : leave) {
        screen.next_dialog(change_everything, way);
        EXPECT_EQ(run(), IDCANCEL);
        EXPECT_EQ(state(), before);
    }
    screen.set_ready(false);
    EXPECT_EQ(run(), -1);
    EXPECT_EQ(state(), before);
}

TEST_F(SettingsDialog, TheAlternativeTemplateHasAListThatStaysEmptyAndAPortMayBeLocked) {
    configuration.SetPortName(4);
    screen.next_dialog([](const DialogView& dialog) {
        EXPECT_TRUE(control(dialog, 201).items.empty());
        EXPECT_FALSE(control(dialog, 544).enabled);
        EXPECT_EQ(chosen(dialog, 544), "COM4:");
        choose(dialog, 544, "COM7:");
        choose(dialog, 545, "38.4k");
        click(dialog, IDOK);
    });
    const auto id = CComSettingDlg::alternative_template;
    EXPECT_EQ(CComSettingDlg(configuration, 1, id, nullptr).DoModal(), IDOK);
    EXPECT_EQ(configuration.m_dwBaudRate, 38400);
    EXPECT_EQ(configuration.m_strPortName, "COM4:");
}

TEST_F(SettingsDialog, WhatNoListOffersIsAnEmptyList) {
    configuration.SetPortName("/dev/ttyUSB0");
    configuration.SetBaudRate(19201);
    configuration.m_wParity = 0xFFFF;
    configuration.m_wByteSize = 9;
    screen.next_dialog([](const DialogView& dialog) {
        EXPECT_EQ(chosen(dialog), ";;;;1;");
        choose(dialog, 546, "8"); // an unlisted size would be stored as 4
        click(dialog, IDOK);
    });
    EXPECT_EQ(run(), IDOK);
    EXPECT_EQ(state(), "/dev/ttyUSB0 -1,8,65535,0 (   ) 0 0");
}

TEST_F(SettingsDialog, SpeaksTheUsersLanguageButStoresTheListsTexts) {
    environment_.speak("de");
    const HINSTANCE before = AfxGetResourceHandle();
    screen.next_dialog([](const DialogView& dialog) {
        EXPECT_NE(dialog.caption, "Serial Port Configuration");
        EXPECT_EQ(chosen(dialog, 547), "Even") << "the registry keeps this text";
        choose(dialog, 547, "Odd");
        click(dialog, IDOK);
    });
    configuration.Edit(0);
    EXPECT_EQ(configuration.m_wParity, 1);
    EXPECT_EQ(AfxGetResourceHandle(), before);
}

TEST_F(SettingsDialog, AnOpenPortTakesTheNewSettingsAtOnce) {
    const support::Pty machine;
    CComDevice device;
    device.m_Configuration.SetPortName(machine.path().c_str());
    ASSERT_TRUE(device.OpenConnection(1));
    screen.next_dialog([](const DialogView& dialog) {
        EXPECT_FALSE(control(dialog, 544).enabled);
        choose(dialog, 545, "38.4k");
        click(dialog, IDOK);
    });
    EXPECT_EQ(device.EditParameters(), 1);
    DCB settings{};
    settings.DCBlength = sizeof(settings);
    ASSERT_TRUE(GetCommState(device.GetHandle(), &settings));
    EXPECT_EQ(settings.BaudRate, 38400);
    EXPECT_EQ(device.m_Configuration.m_strPortName, machine.path().c_str());

    device.CloseConnection();
    screen.next_dialog([](const DialogView& dialog) { click(dialog, IDCANCEL); });
    EXPECT_EQ(device.EditParameters(), 1);
}

} // namespace
