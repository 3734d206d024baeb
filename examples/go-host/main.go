// A host in Go that walks a session: join, status, update, a request that is given up, upload, commit and reset.
//
// Where the identity service is comes from the environment, as for c-host: KIVO_JOIN_PAGE, KIVO_ACTIVATION_CODE, and
// KIVO_HOST_BUNDLE, the folder with the list of pins. KIVO_DATA_FOLDER is where the session is kept.
package main

import (
	"context"
	"fmt"
	"os"
)

func setting(name, otherwise string) string {
	if value, found := os.LookupEnv(name); found {
		return value
	}
	return otherwise
}

// tell prints how a request ended, and whether it succeeded.
func tell(name string, event string, err error) bool {
	if err != nil {
		event = err.Error()
	}
	fmt.Printf("%s: %s\n", name, event)
	return err == nil
}

func walk(session *Session) bool {
	alive := context.Background()
	leaving, leave := context.WithCancel(alive)
	leave()

	event, err := session.Join(alive, setting("KIVO_ACTIVATION_CODE", "123456"), "PASSPORT")
	if !tell("join", event, err) {
		return false
	}
	// The first status may well be refused: the service has not seen the evidence yet.
	event, err = session.Status(alive)
	tell("status", event, err)
	event, err = session.Status(alive)
	tell("status", event, err)
	event, err = session.Update(alive, "inform", "The person has read the terms.")
	tell("update", event, err)
	// The person leaves the page while the request is under way.
	event, err = session.Update(leaving, "inform", "The person has left.")
	tell("update", event, err)
	event, err = session.UploadSelfie(alive, "c2VsZmll")
	tell("upload", event, err)
	event, err = session.Commit(alive)
	return tell("commit", event, err) && session.Reset() == nil
}

func main() {
	_, hasPins := os.LookupEnv("KIVO_HOST_BUNDLE")
	session, err := Open("EXAMPLE-KEY", Setup{
		JoinPage:     setting("KIVO_JOIN_PAGE", "https://test.identity.example/join.html"),
		RequiresPins: hasPins,
		MainBundle:   setting("KIVO_HOST_BUNDLE", ""),
		DataFolder:   setting("KIVO_DATA_FOLDER", ""),
	})
	if err != nil {
		fmt.Println(err)
		os.Exit(1)
	}
	if !walk(session) {
		os.Exit(1)
	}
}
