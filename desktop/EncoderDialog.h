#pragma once

#include "core/dialog.h"
#include "core/resource_scope.h"

#include <array>
#include <atomic>

/// The modeless dialog that guides a person through the initialisation of a measuring arm: each
/// joint's angle encoder must pass its reference mark before the arm can measure. One progress bar
/// an encoder; an encoder counts as initialised when the application says so, or when the person
/// presses the encoder's button in user-controlled mode.
///
/// The application derives from it to be told (OnInitDone, OnAllDone, OnCancelled), owns the object
/// and uses it on the thread of its window. A derived class may destroy the window, and with it the
/// object, in any of these calls. The class itself never closes the dialog.
class TARNEL_API CEncoderInitDlg : public mdfDialog {
  public:
    explicit CEncoderInitDlg(CWnd* parent = nullptr);
    ~CEncoderInitDlg() override;

    /// Makes the window; nonzero on success. The settings below are made before.
    int Create(CWnd* parent);

    static constexpr int max_encoders = 8;

    static LONG GetMaxEncoderCount() { return max_encoders; }

    /// 1 to 8; another count changes nothing and gives 0.
    int SetEncoderCount(int count);

    int GetEncoderCount() const { return m_nEncoderCount; }

    /// The names of the encoders, separated by ";". A row without one keeps its number.
    void SetEncoderNames(const char* names) { m_strEncoderNames = names; }

    CString GetEncoderNames() const { return m_strEncoderNames; }

    // Texts in place of the template's; empty ones leave it as it is.

    void SetEncoderPrompt(const char* prompt) { m_strEncoderPrompt = prompt; }

    CString GetEncoderPrompt() const { return m_strEncoderPrompt; }

    void SetPrompt(const char* prompt) { m_strPrompt = prompt; }

    CString GetPrompt() const { return m_strPrompt; }

    void SetTitle(const char* title) { m_strTitle = title; }

    CString GetTitle() const { return m_strTitle; }

    /// Nonzero: a button for each encoder and "Do All" are shown. Takes effect with Reset().
    void SetUserControlled(int user_controlled) { m_bUserControlled = user_controlled; }

    int GetUserControlled() const { return m_bUserControlled; }

    /// Nonzero: "Set Home" is shown. Takes effect with Reset().
    void set_show_set_home(int show) { m_bShowSetHome = show; }

    int get_show_set_home() const { return m_bShowSetHome; }

    /// Marks the encoder, 0 to 7, as initialised: tells OnInitDone, waits while the referencing
    /// flag is set, dispatching messages, and tells OnAllDone after the last one. A mark that is
    /// there already, and one taken back, does nothing else.
    void SetInitDone(int encoder, int done);

    int GetInitDone(int encoder) const { return m_anInitDone[static_cast<std::size_t>(encoder)]; }

    /// 1 when every encoder that is shown is initialised.
    int GetAllDone() const;

    /// Marks all encoders at once, without waiting; 0 takes the marks back and tells nobody.
    void set_home_init(int init);

    /// Nonzero while the application initialises an encoder. May be cleared by any thread.
    void set_referencing(int referencing) { m_bReferencing = referencing; }

    int get_referencing() const { return m_bReferencing; }

    /// Nonzero once the person has cancelled.
    int GetCancelled() const { return m_bCancelled; }

    /// Takes all marks back, and shows what the settings say.
    void Reset();

    /// Enables or disables the buttons of the encoders that are shown, "Do All" and "Set Home".
    void enable_buttons(int enable);

  protected:
    void DoDataExchange(CDataExchange* exchange) override;
    BOOL OnInitDialog() override;
    void OnCancel() override;

    /// The encoder has been marked as initialised, all at once for -1.
    virtual void OnInitDone(LONG encoder);

    virtual void OnAllDone();
    virtual void OnCancelled();

    void OnSize(UINT type, int width, int height);
    void OnButton1Click();
    void OnButton2Click();
    void OnButton3Click();
    void OnButton4Click();
    void OnButton5Click();
    void OnButton6Click();
    void OnButton7Click();
    void OnButton8Click();
    void OnButtonDoAllClick();
    void OnButtonSetHomeClick();

    DECLARE_MESSAGE_MAP()

  private:
    /// The control of a row, null without a window.
    CWnd* row(const UINT (&ids)[max_encoders], int encoder) const;

    void InitEncoderNames();
    void UpdateUI();
    void ShowEncoderControls(int encoder, int show);
    void FitHeight();
    void SetProgress(int encoder, int position);
    bool RunInit(int encoder);

    static const UINT s_anProgressIds[max_encoders];
    static const UINT s_anStaticIds[max_encoders];
    static const UINT s_anButtonIds[max_encoders];

    CLocaleResourceScope m_ResourceScope; ///< the dialog speaks the user's language all its life
    LONG m_nLastWidth = 0;
    LONG m_nLastHeight = 0;
    LONG m_nEncoderCount = 6;
    std::array<int, max_encoders> m_anInitDone{};
    int m_bCancelled = 0;
    int m_bUserControlled = 0;
    int m_bShowSetHome = 0;
    std::atomic<int> m_bReferencing = 0;
    CString m_strEncoderPrompt;
    CString m_strEncoderNames;
    CString m_strPrompt;
    CString m_strTitle;
};
