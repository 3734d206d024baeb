package main

// The C interface as Go wants it: calls that block the goroutine, contexts that give a request up, failures as errors.

/*
#cgo pkg-config: kivo-c
#include <kivo/c/linux.h>
#include <kivo/kivo.h>

#include <stdlib.h>

void goAnswer(void* user, kivo_outcome* outcome);
void goWork(void* user);
void goRelease(void* user);

// A handle of Go is a number, which C carries in the place of a pointer.
static inline kivo_answer answer_to(uintptr_t handle) {
    return (kivo_answer){
        .call = (void (*)(void*, const kivo_outcome*))goAnswer, .user = (void*)handle, .release = goRelease};
}

static inline kivo_status post(uintptr_t handle) {
    return kivo_main_post(0, goWork, (void*)handle, goRelease);
}
*/
import "C"

import (
	"context"
	"errors"
	"fmt"
	"runtime"
	"runtime/cgo"
	"unsafe"
)

var errMistake = errors.New("the library has refused a call; standard error names the mistake")

// Setup is what the host decides before the library begins.
type Setup struct {
	JoinPage     string
	RequiresPins bool
	MainBundle   string
	DataFolder   string
}

// Failure says why a request failed.
type Failure struct {
	Code, Kind, Cause string
}

func (f *Failure) Error() string { return fmt.Sprintf("%s (%s): %s", f.Code, f.Kind, f.Cause) }

// outcome is what an answer carries: all of it is copied, because the library's own is valid during the answer only.
type outcome struct {
	event   string
	failure *Failure
}

// Session is a verification session. Any goroutine may use it.
type Session struct{ handle *C.kivo_session }

// texts are those of one call, in C's memory.
type texts []unsafe.Pointer

func (t *texts) of(value string) C.kivo_text {
	data := C.CString(value)
	*t = append(*t, unsafe.Pointer(data))
	return C.kivo_text{data: data, length: C.size_t(len(value))}
}

func (t *texts) free() {
	for _, text := range *t {
		C.free(text)
	}
}

func stringOf(text C.kivo_text) string { return C.GoStringN(text.data, C.int(text.length)) }

// Open begins the library on a thread of its own, which from then on is the library's main thread: every call goes
// there, and every answer comes from there.
func Open(key string, setup Setup) (*Session, error) {
	opened := make(chan *C.kivo_session)
	go func() {
		runtime.LockOSThread() // the library knows its main thread by the system's number
		session := open(key, setup)
		opened <- session
		if session != nil {
			C.kivo_main_run()
		}
	}()
	if session := <-opened; session != nil {
		return &Session{session}, nil
	}
	return nil, errMistake
}

func open(key string, setup Setup) *C.kivo_session {
	var given texts
	defer given.free()
	places := C.kivo_linux_options{size: C.sizeof_kivo_linux_options,
		main_bundle: given.of(setup.MainBundle), data_folder: given.of(setup.DataFolder)}
	deployment := C.kivo_deployment{size: C.sizeof_kivo_deployment,
		join_page_test: given.of(setup.JoinPage), requires_pins: C.bool(setup.RequiresPins)}
	if C.kivo_log_set_threshold(C.KIVO_LOG_OFF) != C.KIVO_OK || C.kivo_linux_install(&places) != C.KIVO_OK ||
		C.kivo_network_assume() != C.KIVO_OK || C.kivo_deployment_install(&deployment) != C.KIVO_OK {
		return nil
	}
	return C.kivo_session_open(given.of(key), given.of("18"))
}

// onMain runs work on the library's main thread and waits for its end.
func onMain(work func()) error {
	done := make(chan struct{})
	// The library releases the handle in any case, also when it refuses the call.
	if C.post(C.uintptr_t(cgo.NewHandle(func() { defer close(done); work() }))) != C.KIVO_OK {
		return errMistake
	}
	<-done
	return nil
}

// request begins a request on the main thread and waits for its answer. A context that ends gives the request up; the
// identity service may have received it all the same.
func request(ctx context.Context, begin func(given *texts, answer C.kivo_answer) C.kivo_request) (string, error) {
	answers := make(chan outcome, 1) // the answer never waits for this goroutine
	var number C.kivo_request
	err := onMain(func() {
		var given texts
		defer given.free()
		number = begin(&given, C.answer_to(C.uintptr_t(cgo.NewHandle(answers))))
		if number != 0 && ctx.Err() != nil {
			C.kivo_request_give_up(number)
		}
	})
	if err != nil || number == 0 {
		return "", errMistake
	}
	var answer outcome
	select {
	case answer = <-answers:
	case <-ctx.Done():
		C.kivo_request_give_up(number) // any thread; does nothing when the answer has come
		answer = <-answers
	}
	if answer.failure != nil {
		return "", answer.failure
	}
	return answer.event, nil
}

// Join joins the session of an activation code.
func (s *Session) Join(ctx context.Context, activationCode, documents string) (string, error) {
	return request(ctx, func(given *texts, answer C.kivo_answer) C.kivo_request {
		config := C.kivo_config{size: C.sizeof_kivo_config, environment: C.KIVO_ENVIRONMENT_TEST,
			document_list: given.of(documents)}
		return C.kivo_session_join(s.handle, given.of(activationCode), &config, answer)
	})
}

// Status asks for the session's status.
func (s *Session) Status(ctx context.Context) (string, error) {
	return request(ctx, func(_ *texts, answer C.kivo_answer) C.kivo_request {
		return C.kivo_session_status(s.handle, answer)
	})
}

// Update reports an action and a message.
func (s *Session) Update(ctx context.Context, action, message string) (string, error) {
	return request(ctx, func(given *texts, answer C.kivo_answer) C.kivo_request {
		return C.kivo_session_update(s.handle, given.of(action), given.of(message), answer)
	})
}

// UploadSelfie uploads a picture of the person's face in Base64.
func (s *Session) UploadSelfie(ctx context.Context, data string) (string, error) {
	return request(ctx, func(given *texts, answer C.kivo_answer) C.kivo_request {
		return C.kivo_session_upload(s.handle, C.KIVO_OBJECT_SELFIE_IMAGE, given.of(data), answer)
	})
}

// Commit commits the session.
func (s *Session) Commit(ctx context.Context) (string, error) {
	return request(ctx, func(_ *texts, answer C.kivo_answer) C.kivo_request {
		return C.kivo_session_commit(s.handle, answer)
	})
}

// Reset deletes the stored session.
func (s *Session) Reset() error {
	status := C.kivo_status(C.KIVO_OK)
	if err := onMain(func() { status = C.kivo_session_reset(s.handle) }); err != nil || status != C.KIVO_OK {
		return errMistake
	}
	return nil
}
