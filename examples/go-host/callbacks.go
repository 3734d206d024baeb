package main

// What the library calls. A file that exports functions to C must not define any, so these stand alone.

// #include <kivo/kivo.h>
import "C"

import (
	"runtime/cgo"
	"unsafe"
)

func handleOf(user unsafe.Pointer) cgo.Handle { return cgo.Handle(uintptr(user)) }

//export goAnswer
func goAnswer(user unsafe.Pointer, told *C.kivo_outcome) {
	var answer outcome
	if failure := told.failure; failure != nil {
		answer.failure = &Failure{Code: stringOf(failure.code.name),
			Kind: stringOf(C.kivo_failure_kind_name(failure.kind)), Cause: stringOf(failure.cause)}
	} else {
		answer.event = stringOf(C.kivo_event_name(told.event))
	}
	handleOf(user).Value().(chan outcome) <- answer
}

//export goWork
func goWork(user unsafe.Pointer) { handleOf(user).Value().(func())() }

// goRelease lets a handle go. The library calls it once for each handle, after the last use.
//
//export goRelease
func goRelease(user unsafe.Pointer) { handleOf(user).Delete() }
