// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ProtoBufs/PorticoError.pb.h"
#include "orlu/Callback.h"
#include "orlu/ProtoToMarkup.h"

namespace Portico {

/// Who may use a resource. 0 is every consumer on this machine; no other value is in use.
enum class EndpointScope { kLocal = 0 };

enum class Method { kGet, kPut, kPost };

/// The code and subcode of the error for a body that cannot be parsed.
inline constexpr int kParseCode = 0;
inline constexpr int kParseSubcode = 2005;

/// The error that the local API reports for a text that is not the expected message; `what` is the
/// reason.
Error ParseError(const std::string& what);

}  // namespace Portico

/// A service's client of the local API: registers resources, sends requests to those of others, and
/// subscribes to their notifications. Messages are sent as JSON, with field names as in the schema
/// and set fields only.
///
/// Calls are made on one task, that of the callbacks; none blocks. The link is established in the
/// background, as soon as the local API is running, and again after a loss. Registrations hold for
/// the life of the client. A request that is made while the link is down waits for it.
class PorticoClientIF {
public:
    using Paths = std::vector<std::string>;
    /// Takes the error to answer a request with. The service's handlers never call it.
    using OnError = Callback<Portico::Error>;
    template <class Answer>
    using GetHandler = AsyncCallback<Callback<Answer>, OnError>;
    template <class Request, class Answer>
    using BodyHandler = AsyncCallback<Request, Callback<Answer>, OnError>;

    virtual ~PorticoClientIF() = default;

    /// Answers GET on `path`. The handler gets a callback for the answer and one for an error and
    /// calls one of them, once, at any later time. Label and number are not used.
    template <class Answer>
    CallbackConnection RegisterGet(const std::string& path, const GetHandler<Answer>& handler,
                                   Portico::EndpointScope scope, double version,
                                   const std::string& label, int number);

    /// Answers PUT or POST on `path`. The handler gets the request and then the two callbacks. If
    /// the body is not such a message, the handler is not called and the consumer gets `ParseError`
    /// without a guid.
    template <class Request, class Answer>
    CallbackConnection RegisterPut(const std::string& path,
                                   const BodyHandler<Request, Answer>& handler,
                                   Portico::EndpointScope scope, double version,
                                   const std::string& label, int number)
    {
        return RegisterBody(Portico::Method::kPut, path, handler,
                            {scope, version, label, number, handler.Queue()});
    }
    template <class Request, class Answer>
    CallbackConnection RegisterPost(const std::string& path,
                                    const BodyHandler<Request, Answer>& handler,
                                    Portico::EndpointScope scope, double version,
                                    const std::string& label, int number)
    {
        return RegisterBody(Portico::Method::kPost, path, handler,
                            {scope, version, label, number, handler.Queue()});
    }

    /// `ready` is called when the resources of `paths` have all become ready, now or later, and
    /// again each time that happens. `notReady` is called when that ends, also by a loss of the
    /// link; it may be empty. Both get the paths of this registration.
    virtual CallbackConnection RegisterEndpointsOfInterest(
        const Paths& paths, const AsyncCallback<Paths>& ready,
        const AsyncCallback<Paths>& notReady) = 0;

    /// The callback gets each notification of `path`. One that is not such a message is dropped
    /// with a log line.
    template <class Message>
    CallbackConnection RegisterNotification(const std::string& path,
                                            const AsyncCallback<Message>& callback,
                                            Portico::EndpointScope scope, double version);

    /// One of the two callbacks is called, once: with the answer, with the resource's error, or
    /// with the `ParseError` of an answer that is not such a message.
    template <class Answer>
    CallbackConnection SendGet(const std::string& path, const AsyncCallback<Answer>& success,
                               const AsyncCallback<Portico::Error>& error, double version)
    {
        return SendText(Portico::Method::kGet, path, {}, OnText(success, error), version);
    }
    template <class Answer>
    CallbackConnection SendPost(const std::string& path, const google::protobuf::Message& body,
                                const AsyncCallback<Answer>& success,
                                const AsyncCallback<Portico::Error>& error, double version);

protected:
    struct RegistrationOptions {
        Portico::EndpointScope scope = Portico::EndpointScope::kLocal;
        double version = 1.0;
        std::string label;
        int number = 0;
        Orlu::TaskQueuePtr queue = {};  ///< Where the callback runs.
    };

    /// Takes an answer: JSON of the resource's message, or of a `Portico::Error`.
    using Respond = std::function<void(bool isError, const std::string& json)>;
    /// Takes a request's body, which is empty for GET. May be called on any thread; so may the
    /// `Respond`, later and at most once.
    using Serve = std::function<void(const std::string& body, const Respond& respond)>;

    // What an implementation of the link provides.
    virtual CallbackConnection RegisterText(Portico::Method method, const std::string& path,
                                            const Serve& serve,
                                            const RegistrationOptions& options) = 0;
    virtual CallbackConnection RegisterNotificationText(
        const std::string& path, const std::function<void(const std::string& json)>& notify,
        const RegistrationOptions& options) = 0;
    virtual CallbackConnection SendText(Portico::Method method, const std::string& path,
                                        const std::string& body, const Respond& respond,
                                        double version) = 0;

    static std::string Render(const google::protobuf::Message& message)
    {
        return ProtoToMarkup::ToJson(message, true, false, false);
    }

private:
    static void RespondError(const Respond& respond, const Portico::Error& error);
    static void RespondWith(const Respond& respond, const google::protobuf::Message& answer);
    static void LogDropped(const std::string& path, const char* why);
    /// The error in the body of an error answer, or the `ParseError` of that body.
    static Portico::Error ErrorIn(const std::string& json);

    template <class Request, class Answer>
    CallbackConnection RegisterBody(Portico::Method method, const std::string& path,
                                    const BodyHandler<Request, Answer>& handler,
                                    const RegistrationOptions& options);
    template <class Answer>
    static Respond OnText(const AsyncCallback<Answer>& success,
                          const AsyncCallback<Portico::Error>& error);
};

template <class Answer>
CallbackConnection PorticoClientIF::RegisterGet(const std::string& path,
                                                const GetHandler<Answer>& handler,
                                                Portico::EndpointScope scope, double version,
                                                const std::string& label, int number)
{
    auto serve = [handler](const std::string&, const Respond& respond) {
        handler([respond](const Answer& answer) { RespondWith(respond, answer); },
                [respond](const Portico::Error& error) { RespondError(respond, error); });
    };
    return RegisterText(Portico::Method::kGet, path, serve,
                        {scope, version, label, number, handler.Queue()});
}

template <class Request, class Answer>
CallbackConnection PorticoClientIF::RegisterBody(Portico::Method method, const std::string& path,
                                                 const BodyHandler<Request, Answer>& handler,
                                                 const RegistrationOptions& options)
{
    auto serve = [handler](const std::string& body, const Respond& respond) {
        Request request;
        try {
            ProtoToMarkup::FromJson(body, request, request.GetDescriptor()->name());
        } catch (const ProtoToMarkup::MarkupError& error) {
            Portico::Error refusal = Portico::ParseError(error.what());
            refusal.clear_guid();
            RespondError(respond, refusal);
            return;
        }
        handler(
            request, [respond](const Answer& answer) { RespondWith(respond, answer); },
            [respond](const Portico::Error& error) { RespondError(respond, error); });
    };
    return RegisterText(method, path, serve, options);
}

template <class Message>
CallbackConnection PorticoClientIF::RegisterNotification(const std::string& path,
                                                         const AsyncCallback<Message>& callback,
                                                         Portico::EndpointScope scope,
                                                         double version)
{
    auto notify = [callback, path](const std::string& json) {
        Message message;
        try {
            ProtoToMarkup::FromJson(json, message);
        } catch (const ProtoToMarkup::MarkupError& error) {
            LogDropped(path, error.what());
            return;
        }
        callback(message);
    };
    return RegisterNotificationText(path, notify, {scope, version, {}, 0, callback.Queue()});
}

template <class Answer>
CallbackConnection PorticoClientIF::SendPost(const std::string& path,
                                             const google::protobuf::Message& body,
                                             const AsyncCallback<Answer>& success,
                                             const AsyncCallback<Portico::Error>& error,
                                             double version)
{
    std::string text;
    try {
        text = Render(body);
    } catch (const ProtoToMarkup::MarkupError& failure) {
        error(Portico::ParseError(failure.what()));
        return {};
    }
    return SendText(Portico::Method::kPost, path, text, OnText(success, error), version);
}

template <class Answer>
PorticoClientIF::Respond PorticoClientIF::OnText(const AsyncCallback<Answer>& success,
                                                 const AsyncCallback<Portico::Error>& error)
{
    return [success, error](bool isError, const std::string& json) {
        if (isError) {
            error(ErrorIn(json));
            return;
        }
        Answer answer;
        try {
            ProtoToMarkup::FromJson(json, answer);
        } catch (const ProtoToMarkup::MarkupError& failure) {
            error(Portico::ParseError(failure.what()));
            return;
        }
        success(answer);
    };
}
