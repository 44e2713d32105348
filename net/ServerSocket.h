#pragma once

#include "net/ClientSocket.h"

/// The listening end: it takes the first client that connects to its port into its own connection,
/// and listens no more until Listen() is called again. See CTCPIPSocket for the handlers.
class TARNEL_API CTCPIPServerSocket : public CTCPIPSocket {
  public:
    explicit CTCPIPServerSocket(CSocketData* pReceiveData);
    ~CTCPIPServerSocket() override;

    /// Ends any connection as Close() does and listens on `nPort`, instead of where it has listened
    /// before. 1; 0, and listening nowhere, when the port cannot be had.
    int Listen(UINT nPort);

    int IsListening() const { return m_pListening != nullptr; }

    /// Stops listening, closes the connection, and tells it by OnConnectionClosed(0), also when
    /// there was none.
    void CloseConnection();

    void Close() override;

    /// Takes the next client, and hands it to its owner.
    class TARNEL_API CListeningSocket : public CSocket {
      public:
        explicit CListeningSocket(CTCPIPServerSocket* owner);
        ~CListeningSocket() override;

        void OnAccept(int nErrorCode) override;

      private:
        CTCPIPServerSocket* const m_pOwner;
    };

  private:
    void OnClose(int nErrorCode) override;
    void StopListening();
    void TakeConnection(const std::shared_ptr<CListeningSocket>& from);

    std::shared_ptr<CListeningSocket> m_pListening; ///< null while not listening
};
